// One change of one file as a journal notes it: enough to tell afterwards whether the file holds its old
// bytes, its new bytes or something between, to put it right (settle.h), and to take the change back later.
//
//     FileChange change = describe_change(file, edit);
//     ...
//     if (examine(file, change) == FileState::as_changed)
//         undone = inverse_of(change);
//
// Any thread, one at a time for a file.
#pragma once

#include "vantaro/common/file_edit.h"
#include "vantaro/safe_write/open_file.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantaro::core {

/// How a file takes on its new bytes.
enum class WriteMethod : std::uint8_t {
    /// The changed parts are written into the file, and its end moved if need be. Nothing else moves.
    in_place,
    /// The file system inserts or takes out whole blocks first, in one step; then as in_place.
    shift,
    /// A new file takes the old one's name.
    replace,
};

/// A part of a file that changes.
struct ChangedRange {
    std::uint64_t old_offset = 0;
    std::uint64_t old_size = 0;
    /// CRC-32 of the old bytes; unknown in journals of early versions.
    std::optional<std::uint32_t> old_checksum;
    std::string old_bytes;
    std::uint64_t new_offset = 0;
    std::uint64_t new_size = 0;
    /// CRC-32 of the new bytes.
    std::uint32_t new_checksum = 0;
    std::string new_bytes;

    std::uint64_t old_end() const { return old_offset + old_size; }
    std::uint64_t new_end() const { return new_offset + new_size; }
    friend bool operator==(const ChangedRange&, const ChangedRange&) = default;
};

/// What a file that stands beside another one for a moment begins its name with.
inline constexpr const char* temporary_prefix = ".vantaro-";

struct FileChange {
    /// The file's own path, whatever links lead there.
    std::string path;
    FileIdentity before;
    std::uint64_t new_size = 0;
    WriteMethod method = WriteMethod::in_place;
    /// For shift: where, and by how many bytes the file grows (or, below 0, shrinks).
    std::uint64_t shift_offset = 0;
    std::int64_t shift_size = 0;
    /// For replace: the name that the new file has before it takes the old one's.
    std::string temporary;
    /// The time of change that the file gets, in nanoseconds since 1970-01-01 UTC; else the present.
    std::optional<std::int64_t> modified;
    /// In the order of their offsets.
    std::vector<ChangedRange> ranges;
    /// Parts of the old file that stay as they are, between the ranges: with these all of the file's tags.
    std::vector<Extent> kept;
    /// CRC-32 of the kept parts, one behind the other.
    std::uint32_t kept_checksum = 0;

    friend bool operator==(const FileChange&, const FileChange&) = default;
};

/// The change of `edit`, with the old bytes read from `file`. The method is in_place.
/// Throws what OpenFile::read throws.
FileChange describe_change(const OpenFile& file, const FileEdit& edit);

/// What the change does to the file's bytes.
FileEdit edit_of(const FileChange& change);

/// What takes the change back.
FileEdit inverse_of(const FileChange& change);

/// Throws vantaro_io::exception_io_data for a change that nobody can have described: a relative path, ranges
/// that overlap or leave the file, a temporary name elsewhere or of another kind. What a journal says is not
/// believed before.
void check_change(const FileChange& change);

enum class FileState : std::uint8_t {
    as_before,
    as_changed,
    /// The change was begun and not finished.
    between,
    /// Somebody else has changed the file.
    foreign,
};

/// Reads the ranges of the change, which has its old and its new bytes, and what else can tell whether it was
/// cut off. Throws what OpenFile::read throws.
FileState examine(const OpenFile& file, const FileChange& change);

/// Whether the file's ranges hold what the change has put there.
bool holds_new_bytes(const OpenFile& file, const FileChange& change);
/// Whether they hold what was there before. False where the change does not know their checksums.
bool holds_old_bytes(const OpenFile& file, const FileChange& change);
/// Whether the kept parts are what they were, with the ranges as in the new file or as in the old one.
bool holds_kept_parts(const OpenFile& file, const FileChange& change, bool is_new);

/// Sets the time of change, where the user may.
void set_modified_if_allowed(const OpenFile& file, std::int64_t nanoseconds);

/// Writes the new ranges to where they stand in the new content, and sets the time of change that is asked
/// for. Throws what OpenFile::write throws.
void write_new_bytes(const OpenFile& file, const FileChange& change);

/// Makes the file what it was, also after a change that failed half-way, its time of change included.
/// Requires: method is not replace. Throws what OpenFile throws; calling it again later is fine.
void put_back(const OpenFile& file, const FileChange& change);

} // namespace vantaro::core
