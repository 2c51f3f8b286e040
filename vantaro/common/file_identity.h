// Which file a path leads to, and whether it is still the same.
//
//     FileIdentity before = FileIdentity::of(path);
//     ...
//     if (FileIdentity::of(path) != before) throw ...;
//
// Any thread.
#pragma once

#include "host/api/track.h"

#include <compare>
#include <cstdint>
#include <string>

struct stat;

namespace vantaro::core {

struct FileIdentity {
    /// Two paths with equal device and inode are the same file.
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    /// In bytes.
    std::uint64_t size = 0;
    /// Of the last change of the content, in nanoseconds since 1970-01-01 UTC.
    std::int64_t modified = 0;

    /// Follows symbolic links.
    /// Throws: vantaro_io::exception_io_not_found, exception_io_denied, exception_io.
    static FileIdentity of(const std::string& path);
    static FileIdentity of(const struct ::stat& file);

    FileStats stats() const;

    friend auto operator<=>(const FileIdentity&, const FileIdentity&) = default;
};

/// What tells within a run whether anybody has changed a file meanwhile, whatever time of change it was given
/// then. Of no use later: a file's status changes by being renamed, or getting another owner.
struct FileStatus {
    FileIdentity identity;
    /// Of the last change of anything about the file, in nanoseconds since 1970-01-01 UTC.
    std::int64_t status_changed = 0;

    /// As FileIdentity::of.
    static FileStatus of(const std::string& path);
    static FileStatus of(const struct ::stat& file);

    friend bool operator==(const FileStatus&, const FileStatus&) = default;
};

} // namespace vantaro::core
