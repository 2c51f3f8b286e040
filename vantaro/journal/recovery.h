// Putting right what a run left behind that was cut off: by a crash, a power failure, a kill.
//
//     recover_runs(store, [](const std::string& line) { ... });
//
// Done at each start, before anything else is written. One thread.
#pragma once

#include "vantaro/journal/run_store.h"

#include <functional>
#include <string>

namespace vantaro::core {

/// Puts every file of every abandoned run to exactly its old or exactly its new bytes, removes temporary
/// files, and ends the journals, so that what such a run did can be taken back. A run with files that cannot
/// be reached now stays open; the next start tries again. `report` takes a line for whatever the user should
/// know. Throws nothing of its own: a journal that cannot be read is reported.
void recover_runs(RunStore& store, const std::function<void(const std::string& line)>& report);

} // namespace vantaro::core
