#include "vantaro/safe_write/file_change.h"

#include "host/api/exceptions.h"
#include "vantaro/common/checksum.h"
#include "vantaro/common/system_error.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>

namespace vantaro::core {

namespace {

/// What a range may look like, byte by byte, while the change is under way. The file holds the range at
/// `place`; `is_shifted` tells whether the file system has moved its blocks by now.
class Transition {
public:
    Transition(const FileChange& change, const ChangedRange& range, bool is_shifted)
        : change_(change), range_(range), is_shifted_(is_shifted) {}

    std::uint64_t place() const { return is_shifted_ ? range_.new_offset : range_.old_offset; }
    std::size_t size() const {
        if (change_.method == WriteMethod::shift)
            return is_shifted_ ? range_.new_size : range_.old_bytes.size();
        return std::max<std::size_t>(range_.old_bytes.size(), range_.new_size);
    }
    bool may_hold(std::uint64_t position, char byte) const {
        if (is(range_.old_bytes, range_.old_offset, position, byte)
            || is(range_.new_bytes, range_.new_offset, position, byte))
            return true;
        if (change_.method == WriteMethod::in_place)
            return byte == '\0' && position >= change_.before.size; // written size ahead of written bytes
        // Blocks can reach the medium ahead of the shift that gives them their new place, or behind it.
        const auto moved = [&](std::int64_t by) { return position + static_cast<std::uint64_t>(by); };
        return is_shifted_
                   ? byte == '\0' || is(range_.old_bytes, range_.old_offset, moved(-change_.shift_size), byte)
                   : is(range_.new_bytes, range_.new_offset, moved(change_.shift_size), byte);
    }

private:
    static bool is(const std::string& bytes, std::uint64_t start, std::uint64_t position, char byte) {
        return position >= start && position - start < bytes.size() && bytes[position - start] == byte;
    }

    const FileChange& change_;
    const ChangedRange& range_;
    const bool is_shifted_;
};

bool is_cut_off(const OpenFile& file, const FileChange& change, std::uint64_t size) {
    if (change.method == WriteMethod::replace)
        return false;
    const bool is_shifted =
        change.method == WriteMethod::shift && size == change.new_size && change.shift_size != 0;
    const auto [least, most] = std::minmax(change.before.size, change.new_size);
    if (change.method == WriteMethod::shift ? size != least && size != most : size < least || size > most)
        return false;
    return std::ranges::all_of(change.ranges, [&](const ChangedRange& range) {
        const Transition transition(change, range, is_shifted);
        const std::string bytes = file.read(transition.place(), transition.size());
        for (std::size_t i = 0; i < bytes.size(); ++i)
            if (!transition.may_hold(transition.place() + i, bytes[i]))
                return false;
        return true;
    });
}

/// The file is gone although its file system is there: a medium that is missing leaves at most the empty
/// folder behind that it was mounted on.
bool is_deleted(const FileChange& change) {
    struct stat found;
    if (::lstat(change.path.c_str(), &found) == 0 || (errno != ENOENT && errno != ENOTDIR))
        return false;
    std::filesystem::path folder = std::filesystem::path(change.path).parent_path();
    while (::stat(folder.c_str(), &found) != 0) {
        if (folder == folder.parent_path())
            return false;
        folder = folder.parent_path();
    }
    return found.st_dev == change.before.device;
}

} // namespace

void set_modified_if_allowed(const OpenFile& file, std::int64_t nanoseconds) {
    try {
        file.set_modified(nanoseconds);
    } catch (const vantaro_io::exception_io&) {
        // Who may write a file of somebody else may still not set its times.
    }
}

void write_new_bytes(const OpenFile& file, const FileChange& change) {
    for (const ChangedRange& range : change.ranges)
        file.write(range.new_offset, range.new_bytes);
    if (change.modified)
        set_modified_if_allowed(file, *change.modified);
}

FileChange describe_change(const OpenFile& file, const FileEdit& edit) {
    FileChange change;
    change.path = file.path();
    change.before = file.identity();
    change.new_size = edit.new_size();
    std::int64_t growth = 0;
    for (const Splice& splice : edit.splices) {
        ChangedRange& range = change.ranges.emplace_back();
        range.old_offset = splice.offset;
        range.old_bytes = file.read(splice.offset, splice.size);
        if (range.old_bytes.size() != splice.size)
            throw vantaro_io::exception_io("The file has become shorter while it was being read");
        range.new_offset = splice.offset + static_cast<std::uint64_t>(growth);
        range.new_size = splice.bytes.size();
        range.new_checksum = checksum(splice.bytes);
        range.new_bytes = splice.bytes;
        growth += splice.growth();
    }
    return change;
}

FileEdit edit_of(const FileChange& change) {
    FileEdit edit{change.before.size, {}};
    for (const ChangedRange& range : change.ranges)
        edit.splices.push_back({range.old_offset, range.old_bytes.size(), range.new_bytes});
    return edit;
}

FileEdit inverse_of(const FileChange& change) {
    FileEdit edit{change.new_size, {}};
    for (const ChangedRange& range : change.ranges)
        edit.splices.push_back({range.new_offset, range.new_size, range.old_bytes});
    return edit;
}

bool holds_new_bytes(const OpenFile& file, const FileChange& change) {
    return file.identity().size == change.new_size
           && std::ranges::all_of(change.ranges, [&](const ChangedRange& range) {
                  return checksum(file.read(range.new_offset, range.new_size)) == range.new_checksum;
              });
}

FileState examine(const OpenFile& file, const FileChange& change) {
    const std::uint64_t size = file.identity().size;
    if (holds_new_bytes(file, change))
        return FileState::as_changed;
    if (size == change.before.size && std::ranges::all_of(change.ranges, [&](const ChangedRange& range) {
            return file.read(range.old_offset, range.old_bytes.size()) == range.old_bytes;
        }))
        return FileState::as_before;
    return is_cut_off(file, change, size) ? FileState::between : FileState::foreign;
}

void put_back(const OpenFile& file, const FileChange& change) {
    const std::uint64_t size = file.identity().size;
    if (change.method == WriteMethod::shift && size == change.new_size)
        file.shift(change.shift_offset, -change.shift_size);
    for (const ChangedRange& range : change.ranges)
        file.write(range.old_offset, range.old_bytes);
    if (file.identity().size != change.before.size)
        file.truncate(change.before.size);
    set_modified_if_allowed(file, change.before.modified);
}

FileState settle(SystemCalls& calls, const FileChange& change) {
    if (!change.temporary.empty() && calls.unlink(change.temporary) != 0 && errno != ENOENT
        && errno != ENOTDIR)
        throw_system_error(errno);
    if (is_deleted(change))
        return FileState::foreign;
    const bool is_written = change.method != WriteMethod::replace;
    const OpenFile file = OpenFile::open(calls, change.path, is_written ? O_RDWR : O_RDONLY);
    const FileState state = examine(file, change);
    if (state != FileState::between) {
        file.sync(); // what is seen here may still be in memory only
        return state;
    }
    bool is_finished = false;
    if (change.method == WriteMethod::shift && file.identity().size == change.new_size) {
        try {
            write_new_bytes(file, change);
            is_finished = true;
        } catch (const vantaro_io::exception_io&) {
            // No room for the new blocks, perhaps: back, then.
        }
    }
    if (!is_finished)
        put_back(file, change);
    file.sync();
    return is_finished ? FileState::as_changed : FileState::as_before;
}

} // namespace vantaro::core
