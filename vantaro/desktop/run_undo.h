// Taking back a run from the window.
//
//     if (const auto run = newest_run_to_undo(host.runs().runs()))
//         start_undo(host, run->number, std::move(watcher), [&](const UndoOutcome& outcome) { ... });
//
// Main thread.
#pragma once

#include "vantaro/application/host.h"
#include "vantaro/journal/undo.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vantaro::core {

struct UndoOutcome {
    UndoReport report;
    std::vector<Track*> put_back;
    /// Why the undo could not be begun; empty when it was.
    std::string error;
};

/// Takes the run back in turn with the host's updates. For the watcher the files are tracks that are written,
/// or fail. `on_end` is called after the watcher's own.
void start_undo(Host& host, std::uint64_t run, std::unique_ptr<UpdateWatcher> watcher,
                const std::function<void(const UndoOutcome& outcome)>& on_end);

} // namespace vantaro::core
