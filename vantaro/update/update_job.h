// One update of tags: reads the files ahead on several threads, calls the filter on one thread in list order,
// prepares what came out different on several threads, and writes it as one run that can be taken back.
//
//     UpdateJob job(tracks, filter, observer, abort, {runs, "run tidy.qvx", now});
//     UpdateReport report = job.run();
//
// run() is called once, on a thread of its own, and returns when everything is done. The observer is called
// in list order, one call at a time, on any of the job's threads.
#pragma once

#include "host/api/tag_io.h"
#include "vantaro/journal/recovery.h"
#include "vantaro/services/abort_signal.h"
#include "vantaro/tags/tag_file.h"
#include "vantaro/tracks/track_table.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantaro::core {

/// What became of one track.
struct TrackOutcome {
    enum class State { unchanged, written, failed };

    Track* track = nullptr;
    State state = State::unchanged;
    /// The tags as they were read, and as they are now: as the format has them when the track was written, as
    /// the filter left them when it failed. Both empty when the file could not be read.
    TrackInfoRecord before;
    TrackInfoRecord after;
    /// Why it failed.
    std::string error;
    /// It failed because the run has no journal, as every other track of the update does: the report's
    /// problem says so once for all.
    bool is_not_begun = false;
    /// Where its tag was written as one of another version.
    std::optional<TagVersionChange> tag_version;
};

struct UpdateReport {
    /// Different tracks in the list, and how many of them were written and failed. After an abort the rest
    /// was not touched.
    std::size_t total = 0;
    std::size_t written = 0;
    std::size_t unchanged = 0;
    std::size_t failed = 0;
    bool aborted = false;
    /// The number under which the run can be taken back; 0 when no file was written.
    std::uint64_t run = 0;
    /// What else went wrong: files that may not be on the medium yet, a journal that could not be begun or
    /// ended.
    std::string problem;
};

/// How the files are written.
struct UpdateSettings {
    /// Outlives the job.
    RunStore& runs;
    /// What the user asked for, for the list of runs.
    std::string activity;
    /// The present, in nanoseconds since 1970-01-01 UTC.
    std::int64_t now = 0;
    /// Files keep their times of change.
    bool keeps_times = false;
    /// How many threads read, and how many prepare what is written.
    unsigned threads = 1;
    /// The filter changes nothing.
    bool reads_only = false;
    /// What there is to say of runs that were cut off; on any thread.
    RecoveryReport report = [](const std::string&) {};
    /// How the tags are stored.
    TagOptions tags = {};
};

class UpdateObserver {
public:
    virtual ~UpdateObserver() = default;
    /// The track is done. `done` tracks of `total` are, this one included.
    virtual void on_track(const TrackOutcome& outcome, std::size_t done, std::size_t total) = 0;
};

class UpdateJob {
public:
    /// `filter` and `observer` outlive the job. A track that stands in the list several times is edited once,
    /// and so is a file that several tracks lead to (hard links, symbolic links): the first one in the list
    /// is edited, and the others are reported as what it became.
    UpdateJob(const std::vector<Track*>& tracks, TrackFilter& filter, UpdateObserver& observer,
              const AbortFlag& abort, UpdateSettings settings);
    ~UpdateJob();
    UpdateJob(const UpdateJob&) = delete;
    UpdateJob& operator=(const UpdateJob&) = delete;

    UpdateReport run();
    /// The tracks whose tags were written, sorted by address. Requires: run() has returned.
    const std::vector<TrackHandle*>& written_tracks() const;

private:
    class Pipeline;
    std::unique_ptr<Pipeline> pipeline_;
};

} // namespace vantaro::core
