// Getting a change of a file ready: everything that takes time or can fail, without touching the file.
//
//     PreparedChange prepared = prepare_change(std::move(file), edit, options, names);
//     ... the journal notes prepared.change ...
//     FileIdentity now = apply_change(prepared);
//
// How the file takes on its new bytes is chosen here, the first that fits:
// - in place, when nothing moves but the end of the file and what changes is small;
// - shifted by whole blocks, on ext4 when the change of the length is a multiple of the block size and the
//   file has so few extents that the file system makes the shift in one transaction
//   (linux/fs/ext4/extents.c);
// - replaced by a new file, with owner, permissions, access lists and extended attributes of the old one;
// - in place from the first change to the end, when the file has several names, or no file with the same
//   attributes can be made in its folder, or its file system does not replace files safely (file_system.h).
//
// Any thread, one at a time for a file.
#pragma once

#include "host/api/exceptions.h"
#include "vantaro/safe_write/file_change.h"

#include <functional>
#include <optional>
#include <string>

namespace vantaro::core {

/// Names for files that stand beside another one for a moment.
struct TemporaryNames {
    /// A name in the folder that nobody else takes.
    std::function<std::string(const std::string& folder)> next;
    /// Called before a file of that name is on the medium; it may be left behind by a crash from now on.
    std::function<void(const std::string& path)> announce;
};

struct ChangeOptions {
    /// The time of change that the file gets; else the present.
    std::optional<std::int64_t> modified;
    /// What the file was like when its edit was begun; else as it is now.
    std::optional<FileStatus> seen;
    bool may_shift = true;
};

/// A new file that takes the old one's place, or goes away. It stays where it is the last that is left.
class Replacement {
public:
    /// `name` is where it stands already, empty when it has no name yet; `path` is whose place it takes.
    Replacement(OpenFile file, std::string name, std::string path)
        : file_(std::move(file)), name_(std::move(name)), path_(std::move(path)) {}
    ~Replacement();
    Replacement(Replacement&& other) noexcept;
    Replacement& operator=(Replacement&& other) noexcept;

    const OpenFile& file() const { return file_; }
    /// Renames it; it has the name `temporary` before. Throws what OpenFile throws; LeftBetween when the old
    /// file has gone and this one could not take its name.
    void take_place(const std::string& temporary);

private:
    void remove();

    OpenFile file_;
    std::string name_;
    std::string path_;
};

struct PreparedChange {
    FileChange change;
    /// Locked, as it was handed in.
    OpenFile file;
    /// What the file was like when its edit was begun.
    FileStatus seen;
    std::optional<Replacement> replacement;

    /// How many bytes of memory it takes, about.
    std::size_t memory() const;
};

/// `file` is open for reading and writing, under its own path, and `edit` was made of it. It is taken over.
/// Requires: !edit.empty(). Throws what OpenFile throws; nothing has happened then, `file` included.
PreparedChange prepare_change(OpenFile&& file, const FileEdit& edit, const ChangeOptions& options,
                              const TemporaryNames& names);

/// What apply_change throws when the file system will not shift this file after all. The file is as before.
class ShiftRefused : public std::exception {
public:
    const char* what() const noexcept override { return "The file system cannot move the file's blocks"; }
};

/// What apply_change throws when the file could not be put back: it can be later, from the journal. The
/// prepared change has the file open, and locked, until then.
class LeftBetween : public vantaro_io::exception_io {
    using exception_io::exception_io;
};

/// Carries the change out. The journal has it by now. Returns what the file is like afterwards.
/// Throws what OpenFile throws, and exception_io when somebody has changed the file meanwhile; the file then
/// holds its old bytes. ShiftRefused, LeftBetween.
FileIdentity apply_change(PreparedChange& prepared);

} // namespace vantaro::core
