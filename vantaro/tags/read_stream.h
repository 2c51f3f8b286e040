// A file that is read, as a TagLib stream.
//
//     ReadStream stream(path);
//     read_from(stream);
//     stream.check();
//
// Never waits for the other end of a pipe. One thread at a time.
#pragma once

#include <tiostream.h>

#include <cstdint>
#include <exception>
#include <string>

namespace vantaro::core::tags {

class ReadStream final : public TagLib::IOStream {
public:
    /// Throws exception_io_not_found, exception_io_denied, exception_io (with the system's text), and
    /// exception_io_data when it is no regular file.
    static ReadStream open(const std::string& path);
    ~ReadStream() override;
    ReadStream(const ReadStream&) = delete;
    ReadStream& operator=(const ReadStream&) = delete;

    /// Throws what went wrong while the file was read: TagLib has taken it for the end of the file.
    void check() const;

    TagLib::FileName name() const override { return path_.c_str(); }
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector&) override {}
    void insert(const TagLib::ByteVector&, unsigned long, unsigned long) override {}
    void removeBlock(unsigned long, unsigned long) override {}
    bool readOnly() const override { return true; }
    bool isOpen() const override { return true; }
    void seek(long offset, Position position) override;
    long tell() const override { return static_cast<long>(position_); }
    long length() override { return static_cast<long>(size_); }
    void truncate(long) override {}

private:
    ReadStream(std::string path, int descriptor, std::uint64_t size);

    std::size_t read(std::uint64_t start, char* buffer, std::size_t size);

    const std::string path_;
    const int descriptor_;
    const std::uint64_t size_;
    std::uint64_t position_ = 0;
    std::string block_; ///< what was read last, from a multiple of the size of blocks on
    std::uint64_t block_start_ = 0;
    std::exception_ptr failure_;
};

} // namespace vantaro::core::tags
