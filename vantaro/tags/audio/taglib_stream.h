// A part of a file as a stream for TagLib, which describes the audio of some formats; nothing can be written.
//
//     TagLibStream stream(file, start, end);
//     TagLib::APE::File ape(&stream);
//     stream.check();
//
// TagLib looks for the first and the last frame of a file, however far they are. In a file of zeros, such as
// a download that has only been begun or a file that somebody has made large, that is all of it. So it gets
// to see the end of the file after 16 MiB forwards, or 64 MiB backwards, which is faster: half a second to
// two seconds. Frames and pages have at most 64 KiB, and what has been left in front of the first is no more
// than a picture or another tag (the file's own tags are not searched); behind the last, a download may have
// its place reserved. Likewise no piece of a tag is larger than what the largest kind of tag, ID3v2, allows.
//
// One thread at a time.
#pragma once

#include "vantaro/tags/file_bytes.h"

#include <tbytevector.h>
#include <tiostream.h>

#include <exception>

namespace vantaro::core::tags {

class TagLibStream final : public TagLib::IOStream {
public:
    /// The bytes from `start` to `end` of the file, which outlives this.
    TagLibStream(FileBytes& file, std::size_t start, std::size_t end)
        : file_(file), start_(start), size_(static_cast<long>(end - start)) {}

    /// Throws what went wrong while the file was read, abort included: TagLib has taken it for the end.
    void check() const;

    TagLib::FileName name() const override { return file_.path().c_str(); }
    /// Throws exception_aborted or exception_io_data when the end of the file is ignored: TagLib goes back to
    /// the first byte of a file in any case. It then loses some memory, which it cannot give back.
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector&) override {}
    void insert(const TagLib::ByteVector&, unsigned long, unsigned long) override {}
    void removeBlock(unsigned long, unsigned long) override {}
    bool readOnly() const override { return true; }
    bool isOpen() const override { return true; }
    void seek(long offset, Position position) override;
    long tell() const override { return position_; }
    long length() override { return size_; }
    void truncate(long) override {}

private:
    TagLib::ByteVector feigned_end();
    bool may_search();
    std::size_t read(std::size_t offset, char* buffer, std::size_t size);

    FileBytes& file_;
    const std::size_t start_;
    const long size_;
    long position_ = 0;
    std::string block_; ///< what was read last, from block_start_ on
    std::size_t block_start_ = 0;
    std::exception_ptr failure_;
    std::size_t searched_ = 0;
    long search_place_ = 0;
    std::size_t ignored_ends_ = 0;
};

} // namespace vantaro::core::tags
