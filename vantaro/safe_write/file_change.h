// One change of one file as a journal notes it: enough to tell afterwards whether the file holds its old
// bytes, its new bytes or something between, to put it right, and to take the change back later.
//
//     switch (settle(calls, change)) {
//     case FileState::as_before: ...
//
// Any thread, one at a time for a file.
#pragma once

#include "vantaro/safe_write/file_edit.h"

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
    std::string old_bytes;
    std::uint64_t new_offset = 0;
    std::uint64_t new_size = 0;
    /// CRC-32 of the new bytes.
    std::uint32_t new_checksum = 0;
    std::string new_bytes;

    friend bool operator==(const ChangedRange&, const ChangedRange&) = default;
};

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
    /// The state whose bytes the file gets again, when the change takes another one back.
    std::optional<FileIdentity> restores;
    std::vector<ChangedRange> ranges;

    friend bool operator==(const FileChange&, const FileChange&) = default;
};

/// The change of `edit`, with the old bytes read from `file`. The method is in_place.
/// Throws what OpenFile::read throws.
FileChange describe_change(const OpenFile& file, const FileEdit& edit);

/// What the change does to the file's bytes.
FileEdit edit_of(const FileChange& change);

/// What takes the change back.
FileEdit inverse_of(const FileChange& change);

enum class FileState : std::uint8_t {
    as_before,
    as_changed,
    /// The change was begun and not finished.
    between,
    /// Somebody else has changed the file.
    foreign,
};

/// Reads the parts that the change is about. Throws what OpenFile::read throws.
FileState examine(const OpenFile& file, const FileChange& change);

/// Whether the file's new ranges hold what the change has put there.
bool holds_new_bytes(const OpenFile& file, const FileChange& change);

/// Sets the time of change, where the user may.
void set_modified_if_allowed(const OpenFile& file, std::int64_t nanoseconds);

/// Writes the new ranges to where they stand in the new content, and sets the time of change that is asked
/// for. Throws what OpenFile::write throws.
void write_new_bytes(const OpenFile& file, const FileChange& change);

/// Makes the file what it was, also after a change that failed half-way, its time of change included.
/// Requires: method is not replace. Throws what OpenFile throws; calling it again later is fine.
void put_back(const OpenFile& file, const FileChange& change);

/// Puts a file whose change may have been cut off to its old or its new bytes, removes the temporary file,
/// and tells which it was: as_before, as_changed, or foreign, which is left alone. They are then on the
/// medium. A file that is gone is foreign. Throws what OpenFile throws when the file cannot be reached or
/// written.
FileState settle(SystemCalls& calls, const FileChange& change);

} // namespace vantaro::core
