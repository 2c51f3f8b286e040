#include "vantaro/safe_write/file_change.h"

#include "host/api/exceptions.h"
#include "vantaro/common/checksum.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace vantaro::core {

namespace {

/// What a range may look like, byte by byte, while the change is under way. The file holds the range at
/// `place`; `is_shifted` tells whether the file system has moved its blocks by now.
class Transition {
public:
    Transition(const FileChange& change, const ChangedRange& range, bool is_shifted, bool is_without_order)
        : change_(change), range_(range), is_shifted_(is_shifted), is_without_order_(is_without_order) {}

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
            // The size can be written ahead of the bytes; and what is cut off is cleared, or somebody else's,
            // ahead of the size.
            return position >= std::min(change_.before.size, change_.new_size)
                   && (is_without_order_ || byte == '\0');
        if (is_without_order_ && is_in_given_blocks(position))
            return true;
        // Blocks can reach the medium ahead of the shift that gives them their new place, or behind it.
        const auto moved = [&](std::int64_t by) { return position + static_cast<std::uint64_t>(by); };
        return is_shifted_
                   ? byte == '\0' || is(range_.old_bytes, range_.old_offset, moved(-change_.shift_size), byte)
                   : is(range_.new_bytes, range_.new_offset, moved(change_.shift_size), byte);
    }

private:
    /// Blocks that the shift inserts hold anything until they are written, and those that it takes out until
    /// that is on the medium: another file may have got them.
    bool is_in_given_blocks(std::uint64_t position) const {
        const bool is_inserted = change_.shift_size > 0;
        const auto size = static_cast<std::uint64_t>(is_inserted ? change_.shift_size : -change_.shift_size);
        return is_inserted == is_shifted_ && position >= change_.shift_offset
               && position - change_.shift_offset < size;
    }
    static bool is(const std::string& bytes, std::uint64_t start, std::uint64_t position, char byte) {
        return position >= start && position - start < bytes.size() && bytes[position - start] == byte;
    }

    const FileChange& change_;
    const ChangedRange& range_;
    const bool is_shifted_;
    const bool is_without_order_;
};

bool is_cut_off(const OpenFile& file, const FileChange& change, std::uint64_t size) {
    if (change.method == WriteMethod::replace)
        return false;
    const bool is_shifted =
        change.method == WriteMethod::shift && size == change.new_size && change.shift_size != 0;
    if (!holds_kept_parts(file, change, is_shifted))
        return false;
    const bool is_without_order = file.calls().file_system(file.descriptor()).without_order;
    const auto [least, most] = std::minmax(change.before.size, change.new_size);
    if (change.method == WriteMethod::shift ? size != least && size != most : size < least || size > most)
        return false;
    return std::ranges::all_of(change.ranges, [&](const ChangedRange& range) {
        const Transition transition(change, range, is_shifted, is_without_order);
        const std::string bytes = file.read(transition.place(), transition.size());
        for (std::size_t i = 0; i < bytes.size(); ++i)
            if (!transition.may_hold(transition.place() + i, bytes[i]))
                return false;
        return true;
    });
}

constexpr std::size_t buffer_size = 1 << 20;

/// The checksum of bytes that need not fit in memory at once.
class RunningChecksum {
public:
    explicit RunningChecksum(const OpenFile& file) : file_(file) {}

    /// Returns whether all of them were there.
    bool add(std::uint64_t offset, std::uint64_t size) {
        while (size > 0) {
            const std::string bytes = file_.read(offset, std::min<std::uint64_t>(size, buffer_size));
            if (bytes.empty())
                return false;
            value_ = checksum(bytes, value_);
            offset += bytes.size();
            size -= bytes.size();
        }
        return true;
    }
    std::uint32_t value() const { return value_; }

private:
    const OpenFile& file_;
    std::uint32_t value_ = 0;
};

/// The parts of the old file that `edit` has looked at and leaves as they are.
std::vector<Extent> kept_parts(const FileEdit& edit) {
    std::vector<Extent> result;
    auto splice = edit.splices.begin();
    for (const Extent& part : edit.looked_at) {
        std::uint64_t start = part.offset;
        while (splice != edit.splices.end() && splice->end() <= start)
            ++splice;
        for (auto next = splice; next != edit.splices.end() && next->offset < part.end(); ++next) {
            if (next->offset > start)
                result.push_back({start, next->offset - start});
            start = std::max(start, next->end());
        }
        if (start < part.end())
            result.push_back({start, part.end() - start});
    }
    return result;
}

/// Calls `visit(part)` for each kept part with its place in the new file.
template <class Visit>
void for_each_new_place(const FileChange& change, const Visit& visit) {
    std::uint64_t old_end = 0; // of the ranges in front of the part
    std::uint64_t new_end = 0;
    auto range = change.ranges.begin();
    for (const Extent& part : change.kept) {
        for (; range != change.ranges.end() && range->old_end() <= part.offset; ++range) {
            old_end = range->old_end();
            new_end = range->new_end();
        }
        visit(Extent{part.offset - old_end + new_end, part.size});
    }
}

bool holds(const OpenFile& file, std::uint64_t offset, std::uint64_t size, std::uint32_t expected) {
    RunningChecksum sum(file);
    return sum.add(offset, size) && sum.value() == expected;
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
        range.old_size = splice.size;
        range.old_bytes = file.read(splice.offset, splice.size);
        if (range.old_bytes.size() != splice.size)
            throw vantaro_io::exception_io("The file has become shorter while it was being read");
        range.old_checksum = checksum(range.old_bytes);
        range.new_offset = splice.offset + static_cast<std::uint64_t>(growth);
        range.new_size = splice.bytes.size();
        range.new_checksum = checksum(splice.bytes);
        range.new_bytes = splice.bytes;
        growth += splice.growth();
    }
    change.kept = kept_parts(edit);
    RunningChecksum sum(file);
    for (const Extent& part : change.kept)
        sum.add(part.offset, part.size);
    change.kept_checksum = sum.value();
    return change;
}

FileEdit edit_of(const FileChange& change) {
    FileEdit edit{change.before.size, {}, change.kept};
    for (const ChangedRange& range : change.ranges)
        edit.splices.push_back({range.old_offset, range.old_size, range.new_bytes});
    return edit;
}

FileEdit inverse_of(const FileChange& change) {
    FileEdit edit{change.new_size, {}};
    for (const ChangedRange& range : change.ranges)
        edit.splices.push_back({range.new_offset, range.new_size, range.old_bytes});
    for_each_new_place(change, [&](const Extent& part) { edit.looked_at.push_back(part); });
    return edit;
}

void check_change(const FileChange& change) {
    const std::filesystem::path path = change.path;
    bool is_sound = path.is_absolute() && change.path.find('\0') == std::string::npos
                    && change.method <= WriteMethod::replace;
    if (!change.temporary.empty()) {
        const std::filesystem::path temporary = change.temporary;
        is_sound = is_sound && temporary.parent_path() == path.parent_path()
                   && temporary.filename().string().starts_with(temporary_prefix);
    }
    // Nothing may wrap around: a size is looked at before anything is added to it.
    const auto fits = [](std::uint64_t offset, std::uint64_t size, std::uint64_t start, std::uint64_t end) {
        return offset >= start && offset <= end && size <= end - offset;
    };
    std::uint64_t old_end = 0;
    std::uint64_t new_end = 0;
    for (const ChangedRange& range : change.ranges) {
        is_sound = is_sound && fits(range.old_offset, range.old_size, old_end, change.before.size)
                   && fits(range.new_offset, range.new_size, new_end, change.new_size);
        if (!is_sound)
            break;
        old_end = range.old_end();
        new_end = range.new_end();
    }
    std::uint64_t kept_end = 0;
    for (const Extent& part : change.kept) {
        is_sound = is_sound && fits(part.offset, part.size, kept_end, change.before.size);
        kept_end = is_sound ? part.end() : 0;
    }
    const auto growth = static_cast<std::int64_t>(change.new_size - change.before.size);
    if (!is_sound || (change.method == WriteMethod::shift && change.shift_size != growth))
        throw vantaro_io::exception_io_data();
}

bool holds_new_bytes(const OpenFile& file, const FileChange& change) {
    return file.identity().size == change.new_size
           && std::ranges::all_of(change.ranges, [&](const ChangedRange& range) {
                  return holds(file, range.new_offset, range.new_size, range.new_checksum);
              });
}

bool holds_old_bytes(const OpenFile& file, const FileChange& change) {
    return file.identity().size == change.before.size
           && std::ranges::all_of(change.ranges, [&](const ChangedRange& range) {
                  return range.old_checksum
                         && holds(file, range.old_offset, range.old_size, *range.old_checksum);
              });
}

bool holds_kept_parts(const OpenFile& file, const FileChange& change, bool is_new) {
    RunningChecksum sum(file);
    bool is_there = true;
    const auto add = [&](const Extent& part) { is_there = is_there && sum.add(part.offset, part.size); };
    if (is_new)
        for_each_new_place(change, add);
    else
        std::ranges::for_each(change.kept, add);
    return is_there && sum.value() == change.kept_checksum;
}

FileState examine(const OpenFile& file, const FileChange& change) {
    const std::uint64_t size = file.identity().size;
    if (holds_new_bytes(file, change))
        return FileState::as_changed;
    if (holds_old_bytes(file, change))
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

} // namespace vantaro::core
