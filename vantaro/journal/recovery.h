// Putting right what a run left behind that was cut off: by a crash, a power failure, a kill.
//
//     recover_runs(store, [](const std::string& line) { ... });
//
// Done at each start and before each run and undo, before anything else is written. Any thread, also of
// several processes at once: each run is taken by one of them.
#pragma once

#include "vantaro/journal/run_store.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace vantaro::core {

/// Takes a line for whatever the user should know.
using RecoveryReport = std::function<void(const std::string& line)>;

/// Puts every file of every abandoned run to exactly its old or exactly its new bytes, removes temporary
/// files, and ends the journals, so that what such a run did can be taken back. A file that another program
/// has changed since is left alone; what its journal has of it stays there, and undo names it. A run with
/// files that cannot be reached now stays open, and the next start tries again; but the run `given_up` ends
/// all the same, as if they had been changed. Throws nothing: a journal that cannot be read is reported.
void recover_runs(RunStore& store, const RecoveryReport& report, std::uint64_t given_up = 0);

/// The files that abandoned runs may have left half-written.
struct HalfWrittenFiles {
    std::set<std::string> paths;
    /// Device and inode.
    std::set<std::pair<std::uint64_t, std::uint64_t>> inodes;

    bool contains(const FileChange& change) const;
};
/// Adds the files of each abandoned run, by its number, that is not among them yet. Returns whether there was
/// one.
bool find_half_written(RunStore& store, std::map<std::uint64_t, HalfWrittenFiles>& by_run);

} // namespace vantaro::core
