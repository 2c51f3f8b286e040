// A file as the readers of tags see it: looked at once, its beginning in memory after the first look, its end
// and whatever else is asked for after one more.
//
//     FileBytes file(source, &abort);
//     std::string_view header = file.bytes(0, 10);
//
// What has been read stays, and views of it stay valid, as long as the FileBytes lives. Readers keep what
// they need not look into (pictures, audio) as Part. One thread at a time.
#pragma once

#include "host/api/abort_flag.h"
#include "vantaro/common/file_edit.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

class FileBytes {
public:
    /// Both outlive this; no `abort` means that nobody will. Throws what asking for the size throws.
    explicit FileBytes(const ByteSource& source, const AbortFlag* abort = nullptr);
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    std::size_t size() const { return size_; }
    const std::string& path() const { return source_.path(); }

    /// Exactly these. Throws exception_io_data when the file ends before, or when they are more than any tag
    /// can have; exception_io when the file cannot be read; exception_aborted.
    std::string_view bytes(std::size_t start, std::size_t size);
    /// Up to `size`: fewer at the end of the file.
    std::string_view some(std::size_t start, std::size_t size);
    /// As some(), into a buffer and not kept: for searches and for what is larger than tags.
    std::size_t copy(std::size_t start, char* buffer, std::size_t size);

    bool is_in_memory(std::size_t start, std::size_t size) const;

    /// Says that a tag stands here, also where nobody asks for its bytes.
    void note_tag(std::size_t start, std::size_t size) { looked_at_.push_back({start, size}); }
    /// What was asked for and noted, as FileEdit wants it, as far as it is not more than tags can be.
    std::vector<Extent> looked_at() const;

    /// Throws exception_aborted.
    void check_abort() const;
    const ByteSource& source() const { return source_; }

private:
    struct Chunk {
        std::size_t start;
        std::string_view bytes;
    };

    const Chunk* find_chunk(std::size_t start, std::size_t size) const;
    std::string_view load(std::size_t start, std::size_t size);
    char* take_room(std::size_t size);

    const ByteSource& source_;
    const AbortFlag* const abort_;
    const std::size_t size_;
    std::vector<Chunk> chunks_;
    std::vector<char> spare_; ///< of this thread, and given back: new memory costs more than what is read
    std::size_t spare_used_ = 0;
    std::vector<std::unique_ptr<char[]>> further_;
    std::vector<Extent> looked_at_;
};

/// A part of a file that is not read before somebody asks for it, or bytes that somebody has made.
class Part {
public:
    Part() = default;
    Part(std::string bytes) : made_(std::move(bytes)) {} // NOLINT: bytes are parts
    /// `file` outlives it.
    Part(FileBytes& file, std::size_t start, std::size_t size) : file_(&file), start_(start), size_(size) {}

    std::size_t size() const { return file_ == nullptr ? made_.size() : size_; }
    std::string_view bytes() const {
        return file_ == nullptr ? std::string_view(made_) : file_->bytes(start_, size_);
    }
    /// The first ones.
    std::string_view head(std::size_t count) const {
        count = std::min(count, size());
        return file_ == nullptr ? std::string_view(made_).substr(0, count) : file_->bytes(start_, count);
    }
    /// Some of them. Requires: it has these.
    std::string_view bytes(std::size_t start, std::size_t size) const {
        return file_ == nullptr ? std::string_view(made_).substr(start, size)
                                : file_->bytes(start_ + start, size);
    }
    /// A range of it. Requires: it has one.
    Part part(std::size_t start, std::size_t size) const {
        return file_ == nullptr ? Part(made_.substr(start, size)) : Part(*file_, start_ + start, size);
    }
    /// Whether it is what the file has at this place.
    bool stands_at(std::size_t place) const { return file_ != nullptr && start_ == place; }

private:
    FileBytes* file_ = nullptr;
    std::size_t start_ = 0;
    std::size_t size_ = 0;
    std::string made_;
};

/// Collects what is to be replaced in a file.
///
///     Rewriting rewriting(file);
///     rewriting.replace(start, size, {Part("ID3..."), old_frame.part});
///     FileEdit edit = rewriting.finish();
class Rewriting {
public:
    /// `file` outlives it.
    explicit Rewriting(FileBytes& file) : file_(file) {}

    /// Puts the parts, one behind the other, in the place of the `size` bytes at `start`. Those that stand
    /// where they stood are neither read nor written. The replacements do not overlap; their order does not
    /// matter.
    void replace(std::size_t start, std::size_t size, const std::vector<Part>& parts);
    void replace(std::size_t start, std::size_t size, std::string bytes);

    /// Without what only repeats old bytes. Throws what reading the file throws.
    FileEdit finish();

private:
    FileBytes& file_;
    std::vector<Splice> splices_;
};

} // namespace vantaro::core::tags
