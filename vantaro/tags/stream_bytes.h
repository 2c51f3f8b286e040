// Reading and replacing parts of a stream, and a stream that shows a part of another.
#pragma once

#include <tiostream.h>

#include <string>
#include <string_view>

namespace vantaro::core::tags {

std::size_t stream_size(TagLib::IOStream& stream);
/// Up to `size` bytes: fewer at the end of the stream.
std::string read_some(TagLib::IOStream& stream, std::size_t start, std::size_t size);
/// Exactly `size` bytes. Throws exception_io_data when there are fewer.
std::string read_bytes(TagLib::IOStream& stream, std::size_t start, std::size_t size);
/// Puts `bytes` in the place of the `size` bytes at `start`.
void replace_bytes(TagLib::IOStream& stream, std::size_t start, std::size_t size, std::string_view bytes);

/// The bytes from `start` to `end` of another stream, for reading.
class WindowStream final : public TagLib::IOStream {
public:
    /// `stream` outlives this. Requires: start <= end <= its size.
    WindowStream(TagLib::IOStream& stream, std::size_t start, std::size_t end)
        : stream_(stream), start_(static_cast<long>(start)), size_(static_cast<long>(end - start)) {}

    TagLib::FileName name() const override { return stream_.name(); }
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector&) override {}
    void insert(const TagLib::ByteVector&, unsigned long, unsigned long) override {}
    void removeBlock(unsigned long, unsigned long) override {}
    bool readOnly() const override { return true; }
    bool isOpen() const override { return stream_.isOpen(); }
    void seek(long offset, Position position) override;
    long tell() const override { return position_; }
    long length() override { return size_; }
    void truncate(long) override {}

private:
    TagLib::IOStream& stream_;
    long start_;
    long size_;
    long position_ = 0;
};

} // namespace vantaro::core::tags
