// Taking a run back: every file that it changed gets its old bytes again.
//
//     if (const auto run = newest_run_to_undo(store.runs()))
//         UndoReport report = undo_run(store, run->number, options, observer, abort);
//
// An undo is a run with a journal of its own, and can be taken back as well.
#pragma once

#include "vantaro/journal/recovery.h"
#include "vantaro/services/abort_signal.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vantaro::core {

struct UndoOptions {
    /// The files get their old times of change, too.
    bool times = false;
    /// Of the undo itself, in nanoseconds since 1970-01-01 UTC.
    std::int64_t now = 0;
    /// What there is to say of runs that were cut off; on any thread.
    RecoveryReport report = [](const std::string&) {};
};

struct UndoReport {
    std::size_t total = 0;
    std::size_t put_back = 0;
    std::size_t failed = 0;
    bool aborted = false;
    /// The number of the undo's own run; 0 when no file was put back.
    std::uint64_t run = 0;
    /// What else went wrong: files that may not be on the medium yet, a journal that could not be ended.
    std::string problem;
};

class UndoObserver {
public:
    virtual ~UndoObserver() = default;
    /// A file is done; `error` is empty when it was put back. One call at a time, on any thread.
    virtual void on_file(const std::string& path, const std::string& error, std::size_t done,
                         std::size_t total) = 0;
};

/// The newest run that has ended and is neither an undo nor taken back by one, so that one undo after the
/// other goes back step by step. `runs`: newest first.
std::optional<RunSummary> newest_run_to_undo(const std::vector<RunSummary>& runs);

/// Takes back a run that has ended, or was cut off: what can be put right of that is, first. A file whose
/// tags are not byte for byte as the run left them is refused and left alone, which the observer hears; one
/// that has its old bytes again already counts as put back. Ends between two files when `abort` is set.
/// Throws vantaro_io::exception_io when there is no such run, or its journal cannot be read.
UndoReport undo_run(RunStore& store, std::uint64_t number, const UndoOptions& options, UndoObserver& observer,
                    const AbortFlag& abort);

} // namespace vantaro::core
