#include "vantaro/safe_write/prepare.h"

#include "vantaro/common/system_error.h"
#include "vantaro/safe_write/block_shift.h"
#include "vantaro/safe_write/replacement_file.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace vantaro::core {

namespace {

/// The most bytes that the journal takes for one file, so that memory and disk do not run out.
constexpr std::uint64_t most_noted = std::uint64_t{512} << 20;
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

/// Makes the edit one that stays in place: its last splice takes in everything behind what moves.
void extend_to_end(const OpenFile& file, FileEdit& edit) {
    std::size_t first = 0;
    while (edit.splices[first].growth() == 0)
        ++first;
    const std::uint64_t tail = edit.old_size - edit.splices[first].offset;
    if (noted_size(edit) + 2 * tail > most_noted)
        throw vantaro_io::exception_io(
            "The file has several names or its folder takes no new files, so that it would have to be "
            "rewritten in place, and it is too large for that");
    merge_splices(file, edit, first, edit.splices.size() - 1, edit.splices[first].offset, edit.old_size);
}

FileChange described(const OpenFile& file, const FileEdit& edit, const ChangeOptions& options) {
    FileChange change = describe_change(file, edit);
    change.modified = options.modified;
    change.restores = options.restores;
    return change;
}

} // namespace

Replacement::~Replacement() {
    remove();
}

Replacement::Replacement(Replacement&& other) noexcept
    : file_(std::move(other.file_)), name_(std::exchange(other.name_, {})) {}

Replacement& Replacement::operator=(Replacement&& other) noexcept {
    if (this != &other) {
        remove();
        file_ = std::move(other.file_);
        name_ = std::exchange(other.name_, {});
    }
    return *this;
}

void Replacement::remove() {
    if (!name_.empty())
        file_.calls().unlink(name_);
}

void Replacement::take_place(const std::string& temporary, const std::string& path) {
    SystemCalls& calls = file_.calls();
    if (name_.empty()) {
        if (calls.link_open_file(file_.descriptor(), temporary) != 0)
            throw_system_error(errno);
        name_ = temporary;
    }
    if (calls.rename(name_, path) != 0)
        throw_system_error(errno);
    name_.clear();
}

std::size_t PreparedChange::memory() const {
    std::size_t size = sizeof *this;
    for (const ChangedRange& range : change.ranges)
        size += sizeof range + range.old_bytes.size() + range.new_bytes.size();
    return size;
}

PreparedChange prepare_change(OpenFile file, const FileEdit& edit, const ChangeOptions& options,
                              const TemporaryNames& names) {
    if (stays_in_place(edit) && is_small(edit)) {
        FileChange change = described(file, edit, options);
        return {std::move(change), std::move(file), std::nullopt};
    }
    if (const auto shift = options.may_shift ? plan_shift(file, edit) : std::nullopt;
        shift && is_small(shift->edit)) {
        FileChange change = described(file, shift->edit, options);
        change.method = WriteMethod::shift;
        change.shift_offset = shift->offset;
        change.shift_size = shift->size;
        return {std::move(change), std::move(file), std::nullopt};
    }
    FileChange change = described(file, edit, options);
    if (std::optional<Replacement> replacement = make_replacement(file, edit, names, change.temporary)) {
        change.method = WriteMethod::replace;
        return {std::move(change), std::move(file), std::move(replacement)};
    }
    FileEdit to_end = edit;
    if (!stays_in_place(edit))
        extend_to_end(file, to_end);
    change = described(file, to_end, options);
    return {std::move(change), std::move(file), std::nullopt};
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
        if (errno == EOPNOTSUPP || errno == EINVAL)
            throw ShiftRefused();
        throw_system_error(errno);
    }
    write_new_bytes(file, change);
    if (change.new_size < file.identity().size) {
        file.truncate(change.new_size);
        if (change.modified)
            set_modified_if_allowed(file, *change.modified);
    }
}

} // namespace

FileIdentity apply_change(PreparedChange& prepared) {
    const FileChange& change = prepared.change;
    // What stands under the name must still be the open file.
    if (prepared.file.identity() != change.before || FileIdentity::of(change.path) != change.before)
        throw vantaro_io::exception_io("The file has changed while it was being written");
    if (prepared.replacement) {
        if (change.modified)
            set_modified_if_allowed(prepared.replacement->file(), *change.modified);
        prepared.replacement->take_place(change.temporary, change.path);
        return prepared.replacement->file().identity();
    }
    try {
        apply_in_place(prepared);
    } catch (const vantaro_io::exception_io& error) {
        const std::string why = error.what();
        try {
            put_back(prepared.file, change);
        } catch (const vantaro_io::exception_io& second) {
            throw LeftBetween(why + "; putting the old bytes back failed too (" + second.what()
                              + ") and is tried again at the next start");
        }
        throw;
    }
    return prepared.file.identity();
}

} // namespace vantaro::core
