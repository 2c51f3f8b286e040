// A TagLib stream over a file that it never changes: what is written to it is kept in memory.
//
//     EditStream stream(file);
//     taglib_file.save();
//     FileEdit edit = stream.edit();
//
// A piece table: the new content is a list of pieces, each a range of the old file or of the bytes added.
// One thread at a time.
#pragma once

#include "vantaro/tags/file_bytes.h"

#include <tiostream.h>

#include <exception>
#include <string>
#include <vector>

namespace vantaro::core::tags {

class EditStream final : public TagLib::IOStream {
public:
    /// `file` outlives this, and nobody changes it meanwhile.
    explicit EditStream(FileBytes& file);

    /// What makes the new content of the old one, without what only repeats old bytes.
    /// Throws what went wrong while the file was read: TagLib would have taken it for the end of the file.
    FileEdit edit() const;

    TagLib::FileName name() const override { return file_.path().c_str(); }
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace) override;
    void removeBlock(unsigned long start, unsigned long length) override;
    bool readOnly() const override { return false; }
    bool isOpen() const override { return true; }
    void seek(long offset, Position position) override;
    void clear() override {}
    long tell() const override { return static_cast<long>(position_); }
    long length() override { return static_cast<long>(size_); }
    void truncate(long length) override;

private:
    struct Piece {
        std::uint64_t start; ///< in the new content
        std::uint64_t size;
        std::uint64_t source; ///< in the old file, or in added_
        bool is_added;
    };

    std::size_t piece_at(std::uint64_t position) const;
    std::size_t split(std::uint64_t position);
    void replace(std::uint64_t start, std::uint64_t size, std::string_view bytes);
    void overwrite(std::uint64_t start, std::string_view bytes);
    std::size_t read(std::uint64_t start, char* buffer, std::size_t size);

    FileBytes& file_;
    const std::uint64_t old_size_;
    std::vector<Piece> pieces_; ///< in order, without gaps, none empty
    std::string added_;
    std::uint64_t size_;
    std::uint64_t position_ = 0;
    std::exception_ptr failure_;
};

} // namespace vantaro::core::tags
