// Another stream, of which a library reads no more than makes sense, and only as long as it is wanted.
//
//     WatchedStream watched(stream, &abort);
//     File file(&watched);
//     watched.check_abort();
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

#include "host/api/abort_flag.h"

#include <tbytevector.h>
#include <tiostream.h>

#include <cstddef>

namespace vantaro::core::tags {

class WatchedStream final : public TagLib::IOStream {
public:
    /// Both outlive this; no `abort` means that nobody will.
    WatchedStream(TagLib::IOStream& stream, const AbortFlag* abort) : stream_(stream), abort_(abort) {}

    /// From now on any amount is read: writing may renumber all pages of a file.
    void allow_searches() { searches_all_ = true; }
    /// Throws exception_aborted when the end of the file has been feigned because of the abort.
    void check_abort() const {
        if (aborted_)
            throw vantaro_io::exception_aborted();
    }

    TagLib::FileName name() const override { return stream_.name(); }
    /// Throws exception_aborted or exception_io_data when the end of the file is ignored: TagLib goes back to
    /// the first byte of a file in any case. It then loses some memory, which it cannot give back.
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector& data) override { stream_.writeBlock(data); }
    void insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace) override {
        stream_.insert(data, start, replace);
    }
    void removeBlock(unsigned long start, unsigned long length) override {
        stream_.removeBlock(start, length);
    }
    bool readOnly() const override { return stream_.readOnly(); }
    bool isOpen() const override { return stream_.isOpen(); }
    void seek(long offset, Position position) override { stream_.seek(offset, position); }
    void clear() override { stream_.clear(); }
    long tell() const override { return stream_.tell(); }
    long length() override { return stream_.length(); }
    void truncate(long length) override { stream_.truncate(length); }

private:
    TagLib::ByteVector feigned_end();
    bool may_search();

    TagLib::IOStream& stream_;
    const AbortFlag* abort_;
    std::size_t searched_ = 0;
    long search_place_ = 0;
    std::size_t ignored_ends_ = 0;
    bool searches_all_ = false;
    bool aborted_ = false;
};

} // namespace vantaro::core::tags
