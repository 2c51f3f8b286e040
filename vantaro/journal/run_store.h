// The journals of a user's runs, one file a run, in a folder of their own: "00000012.run" for a run that has
// ended, "00000012.open" for one that is under way or was cut off.
//
//     RunStore store(default_state_dir() + "/runs", real_system_calls());
//     for (const RunSummary& run : store.runs()) ...
//
// Any thread; several processes use the folder at the same time. Throws vantaro_io::exception_io that names
// the file at fault.
#pragma once

#include "vantaro/journal/journal_file.h"
#include "vantaro/journal/record.h"
#include "vantaro/storage/files.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantaro::core {

/// How long the journals of runs are kept. The newest run always is.
struct Retention {
    std::int64_t days = 30;
    /// All journals together, in bytes.
    std::uint64_t bytes = 1'000'000'000;
};

struct RunSummary {
    std::uint64_t number = 0;
    RunStart start;
    /// How many files it changed, or may have; 0 while it is_open.
    std::uint64_t files = 0;
    /// Size of the journal, in bytes.
    std::uint64_t bytes = 0;
    /// Under way, or, when it also was_cut_off, with files that could not be reached since.
    bool is_open = false;
    /// Ended before its time; what it had done by then is what it changed.
    bool was_cut_off = false;
    /// Not all of the journal can be read.
    bool is_damaged = false;
};

/// The journal of a run that is under way.
struct OpenRun {
    std::uint64_t number = 0;
    JournalFile journal;
};

struct AbandonedRuns {
    std::unique_ptr<FileLock> lock; // goes last
    std::vector<OpenRun> runs;
};

/// A folder that is not the user's own, or that others can write to, is refused: whoever writes a journal can
/// have files overwritten and removed.
class RunStore {
public:
    /// The folder is made when it is needed. Empty: there is none, and no run can begin.
    RunStore(std::string folder, SystemCalls& calls) : folder_(std::move(folder)), calls_(calls) {}

    SystemCalls& calls() const { return calls_; }

    /// From now on, each run that ends removes the journals that are too old or too many by then. Without it
    /// none ever goes. Not while others use the object.
    void set_retention(const Retention& retention) { retention_ = retention; }

    /// Begins the journal of a new run. It has its name on the medium, and `start` with the next flush.
    OpenRun begin(const RunStart& start);
    /// Ends it, with everything in it on the medium, and makes a large journal small (shrink.h). Its new name
    /// may get there later: what ends with a RunEnd has ended, whatever it is called.
    void end(OpenRun run, const RunEnd& end);
    /// The same for a journal that has its RunEnd.
    void close(OpenRun run);
    /// Removes the journal of a run that changed nothing.
    void discard(OpenRun run);

    /// Newest first. What is no journal is left out.
    std::vector<RunSummary> runs() const;
    /// Opens the journal of a run that has ended. Throws when there is none.
    OpenFile open(std::uint64_t number) const;
    /// The runs that were cut off: their processes are gone. Whoever else asks waits until the result has
    /// gone, so that nobody overlooks a run that somebody else is putting right. `report` takes a line about
    /// a journal that cannot be read; runs whose number `is_known` are left out.
    AbandonedRuns take_over_abandoned(
        const std::function<void(const std::string& line)>& report,
        const std::function<bool(std::uint64_t number)>& is_known = [](std::uint64_t) { return false; });
    /// Removes what processes left behind that ended while they made a journal smaller.
    void remove_leftovers();
    /// Removes the journals that are too old or too many at the time `now`, in nanoseconds since 1970. Too
    /// old is what is so by the time of the last run but one as well: a clock can be wrong once.
    void prune(const Retention& retention, std::int64_t now);

private:
    struct Entry {
        std::uint64_t number = 0;
        bool is_open = false;
    };

    void check_folder() const;
    std::vector<Entry> entries() const;
    std::string path(std::uint64_t number, const char* ending) const;
    void remove_abandoned(const std::string& path);
    std::optional<RunSummary> summary(const Entry& entry) const;

    const std::string folder_;
    SystemCalls& calls_;
    std::optional<Retention> retention_;
};

} // namespace vantaro::core
