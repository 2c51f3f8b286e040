#include "vantaro/safe_write/prepare.h"

#include "vantaro/common/system_error.h"
#include "vantaro/safe_write/block_shift.h"
#include "vantaro/safe_write/replacement_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace vantaro::core {

namespace {

/// The most bytes that the journal takes for one file, so that memory and disk do not run out.
constexpr std::uint64_t most_noted = std::uint64_t{512} << 20;
/// The same where replacing the file is dangerous only when the power fails.
constexpr std::uint64_t most_noted_rather = std::uint64_t{128} << 20;
/// What is always small enough for writing in place.
constexpr std::uint64_t small = 64 << 10;

/// How much has to be noted to write the splices in place: old bytes and new ones.
std::uint64_t noted_size(const FileEdit& edit) {
    std::uint64_t size = 0;
    for (const Splice& splice : edit.splices)
        size += splice.size + splice.bytes.size();
    return size;
}

bool is_small(const FileEdit& edit) {
    return noted_size(edit) <= std::max(small, edit.old_size / 4);
}

/// Whether all that stays of the file stays where it is.
bool stays_in_place(const FileEdit& edit) {
    return std::ranges::all_of(edit.splices, [&](const Splice& splice) {
        return splice.growth() == 0 || splice.end() == edit.old_size;
    });
}

/// The edit as one that stays in place: its last splice takes in everything behind what moves. Nothing when
/// more than `most` bytes would have to be noted.
std::optional<FileEdit> extended_to_end(const OpenFile& file, const FileEdit& edit, std::uint64_t most) {
    FileEdit result = edit;
    if (stays_in_place(edit))
        return result;
    std::size_t first = 0;
    while (edit.splices[first].growth() == 0)
        ++first;
    const std::uint64_t tail = edit.old_size - edit.splices[first].offset;
    if (noted_size(edit) + 2 * tail > most)
        return std::nullopt;
    merge_splices(file, result, first, edit.splices.size() - 1, edit.splices[first].offset, edit.old_size);
    return result;
}

FileChange described(const OpenFile& file, const FileEdit& edit, const ChangeOptions& options) {
    FileChange change = describe_change(file, edit);
    change.modified = options.modified;
    return change;
}

} // namespace

namespace {

/// Whether the name leads anywhere; not where nobody can tell.
bool is_there(const std::string& path) {
    struct stat found;
    return ::lstat(path.c_str(), &found) == 0;
}

} // namespace

Replacement::~Replacement() {
    remove();
}

Replacement::Replacement(Replacement&& other) noexcept
    : file_(std::move(other.file_)), name_(std::exchange(other.name_, {})), path_(std::move(other.path_)) {}

Replacement& Replacement::operator=(Replacement&& other) noexcept {
    if (this != &other) {
        remove();
        file_ = std::move(other.file_);
        name_ = std::exchange(other.name_, {});
        path_ = std::move(other.path_);
    }
    return *this;
}

void Replacement::remove() {
    // Never the last that is left of a file.
    if (!name_.empty() && is_there(path_))
        file_.calls().unlink(name_);
}

void Replacement::take_place(const std::string& temporary) {
    SystemCalls& calls = file_.calls();
    if (name_.empty()) {
        if (calls.link_open_file(file_.descriptor(), temporary) != 0)
            throw_system_error(errno);
        name_ = temporary;
    }
    if (calls.rename(name_, path_) == 0) {
        name_.clear();
        return;
    }
    const int error = errno;
    if (is_there(path_))
        throw_system_error(error);
    // The file system has removed the old file and then refused.
    const std::string kept = std::exchange(name_, {});
    if (calls.rename(kept, path_) != 0)
        throw LeftBetween("The file system has removed the file and put nothing in its place ("
                          + std::generic_category().message(errno) + "); its new content is kept as " + kept
                          + " and gets its name at the next start");
}

std::size_t PreparedChange::memory() const {
    std::size_t size = sizeof *this;
    for (const ChangedRange& range : change.ranges)
        size += sizeof range + range.old_bytes.size() + range.new_bytes.size();
    return size;
}

PreparedChange prepare_change(OpenFile&& file, const FileEdit& edit, const ChangeOptions& options,
                              const TemporaryNames& names) {
    const FileStatus seen = options.seen ? *options.seen : FileStatus::of(file.status());
    const auto in_place = [&](const FileEdit& fitting) {
        FileChange change = described(file, fitting, options);
        return PreparedChange{std::move(change), std::move(file), seen, std::nullopt};
    };
    if (stays_in_place(edit) && is_small(edit))
        return in_place(edit);
    if (const auto shift = options.may_shift ? plan_shift(file, edit) : std::nullopt;
        shift && is_small(shift->edit)) {
        FileChange change = described(file, shift->edit, options);
        change.method = WriteMethod::shift;
        change.shift_offset = shift->offset;
        change.shift_size = shift->size;
        return {std::move(change), std::move(file), seen, std::nullopt};
    }
    const FileSystemTraits traits = file.calls().file_system(file.descriptor());
    if (!traits.replaces_safely)
        if (const auto fitting =
                extended_to_end(file, edit, traits.never_replaces ? most_noted : most_noted_rather))
            return in_place(*fitting);
    if (!traits.never_replaces) {
        FileChange change = described(file, edit, options);
        if (std::optional<Replacement> replacement = make_replacement(file, edit, names, change.temporary)) {
            change.method = WriteMethod::replace;
            return {std::move(change), std::move(file), seen, std::move(replacement)};
        }
        if (const auto fitting = extended_to_end(file, edit, most_noted))
            return in_place(*fitting);
    }
    throw vantaro_io::exception_io(
        traits.never_replaces
            ? "Files on this network share are rewritten in place, and the file is too large for that"
            : "The file has several names or its folder takes no new files, so that it would have to be "
              "rewritten in place, and it is too large for that");
}

namespace {

void apply_in_place(const PreparedChange& prepared) {
    const OpenFile& file = prepared.file;
    const FileChange& change = prepared.change;
    SystemCalls& calls = file.calls();
    // A disk that is full says so before anything is touched, where the file system can tell.
    if (change.method == WriteMethod::in_place && change.new_size > change.before.size
        && calls.allocate(file.descriptor(), change.before.size, change.new_size - change.before.size) != 0
        && errno != EOPNOTSUPP)
        throw_system_error(errno);
    if (change.method == WriteMethod::shift
        && calls.shift(file.descriptor(), change.shift_offset, change.shift_size) != 0) {
        if (errno == EOPNOTSUPP || errno == EINVAL) {
            set_modified_if_allowed(file, change.before.modified); // some refuse when they have touched it
            throw ShiftRefused();
        }
        throw_system_error(errno);
    }
    write_new_bytes(file, change);
    if (change.new_size < file.identity().size) {
        file.truncate(change.new_size);
        if (change.modified)
            set_modified_if_allowed(file, *change.modified);
    }
}

/// Whether what stands under the name is still the open file, and that is what its edit was made of. File
/// systems of other hosts set times late: where nothing was copied yet, the bytes tell as well.
bool is_as_seen(const PreparedChange& prepared) {
    const FileStatus open = FileStatus::of(prepared.file.status());
    const FileStatus named = FileStatus::of(prepared.change.path);
    if (open == prepared.seen && named == prepared.seen)
        return true;
    const auto same_file = [&](const FileIdentity& identity) {
        return identity.device == prepared.seen.identity.device
               && identity.inode == prepared.seen.identity.inode
               && identity.size == prepared.seen.identity.size;
    };
    return !prepared.replacement && same_file(open.identity) && same_file(named.identity)
           && holds_old_bytes(prepared.file, prepared.change)
           && holds_kept_parts(prepared.file, prepared.change, false);
}

} // namespace

FileIdentity apply_change(PreparedChange& prepared) {
    const FileChange& change = prepared.change;
    if (!is_as_seen(prepared))
        throw vantaro_io::exception_io("The file has changed while it was being written");
    if (prepared.replacement) {
        const OpenFile& file = prepared.replacement->file();
        if (change.modified)
            set_modified_if_allowed(file, *change.modified);
        // Others mind that the file is open which is replaced.
        if (prepared.file.calls().file_system(prepared.file.descriptor()).is_remote)
            prepared.file.close();
        prepared.replacement->take_place(change.temporary);
        return file.identity();
    }
    try {
        apply_in_place(prepared);
    } catch (const std::exception& error) {
        const std::string why = error.what();
        try {
            put_back(prepared.file, change);
        } catch (const std::exception& second) {
            throw LeftBetween(why + "; putting the old bytes back failed too (" + second.what()
                              + ") and is tried again at the next start");
        }
        throw;
    }
    return prepared.file.identity();
}

} // namespace vantaro::core
