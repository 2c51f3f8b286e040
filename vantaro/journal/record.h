// What the journal of a run consists of, and its bytes (docs/run-journal.md).
//
//     std::string bytes = encode(RunStart{now, "run tidy.qvx", 0});
//     Record record = decode(bytes);
//
// Values; any thread.
#pragma once

#include "vantaro/safe_write/file_change.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace vantaro::core {

/// The first record.
struct RunStart {
    /// In nanoseconds since 1970-01-01 UTC.
    std::int64_t time = 0;
    /// What the user asked for.
    std::string activity;
    /// The number of the run that this one takes back; 0 for none.
    std::uint64_t undoes = 0;

    friend bool operator==(const RunStart&, const RunStart&) = default;
};

/// A file of this name may be there that is to go.
struct TemporaryName {
    std::string path;

    friend bool operator==(const TemporaryName&, const TemporaryName&) = default;
};

/// The file is going to be changed.
struct NotedChange {
    /// Counts the changes of the run from 0 on.
    std::uint64_t number = 0;
    FileChange change;

    friend bool operator==(const NotedChange&, const NotedChange&) = default;
};

/// What became of a change. The last one counts.
struct ChangeOutcome {
    std::uint64_t number = 0;
    FileState state = FileState::as_before;
    /// What the file is like, when it is as_changed.
    FileIdentity after;
    /// It was looked at, and put right, after the run had been cut off.
    bool is_settled = false;

    friend bool operator==(const ChangeOutcome&, const ChangeOutcome&) = default;
};

/// The last record of a run: everything is on the medium. Its size never varies.
struct RunEnd {
    /// How many changes the run has to its account: those made, and those whose outcome is not known.
    std::uint64_t files = 0;
    bool was_cut_off = false;

    friend bool operator==(const RunEnd&, const RunEnd&) = default;
};

/// What remains of a change once its run has ended: enough to take it back from the file's new bytes. The old
/// bytes of each range are packed by its new bytes, which are left out.
struct KeptChange {
    FileChange change;
    FileIdentity after;

    friend bool operator==(const KeptChange&, const KeptChange&) = default;
};

using Record = std::variant<RunStart, TemporaryName, NotedChange, ChangeOutcome, RunEnd, KeptChange>;

std::string encode(const Record& record);

/// Throws vantaro_io::exception_io_data when the bytes are no record, or one of a change that nobody can have
/// made (check_change).
Record decode(std::string_view bytes);

/// The path that a record of a change names, whatever else is wrong with it; empty when it names none.
std::string path_in(std::string_view bytes) noexcept;

/// The number of the noted change that the bytes, of which the first few are enough, begin.
/// Throws vantaro_io::exception_io_data when they begin none.
std::uint64_t noted_number(std::string_view bytes);

/// The index of the kind that the bytes begin, of which the first few are enough; variant_npos for none.
std::size_t kind_of(std::string_view bytes) noexcept;

/// Whether the bytes, of which the first few are enough, begin a record of the kind.
template <class Kind>
bool begins(std::string_view bytes) {
    return kind_of(bytes) == Record(Kind()).index();
}

} // namespace vantaro::core
