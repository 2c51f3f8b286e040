// The dry run: what a script would make of one track's tags, without touching any file.
//
//     DryRun dry_run(tracks);
//     TrackInfoRecord after = dry_run.outcome(script, row, before);
//     std::string text = describe_changes(before, after);
//
// Main thread.
#pragma once

#include "engine/run_index.h"
#include "host/api/track_info_record.h"

#include <map>
#include <memory>
#include <string>
#include <utility>

namespace quorvex {

class DryRun {
public:
    explicit DryRun(TrackList tracks) : tracks_(std::make_shared<TrackList>(std::move(tracks))) {}

    const TrackList& tracks() const { return *tracks_; }
    /// The same list, for work on another thread that may outlive this object.
    const std::shared_ptr<const TrackList>& shared_tracks() const { return tracks_; }

    /// Applies the script to the tags of the track at `row`, which `info` holds. Actions count by the row
    /// itself, also for a track that is listed twice, and by groups in the whole list; one that is `skipped`
    /// (or nullptr) is passed over, and so is one whose groups do not have the track. What an action throws
    /// passes. Requires: row < tracks().size().
    void edit(const Script& script, std::size_t row, vantaro::TrackInfo& info,
              const Action* skipped = nullptr);

    /// The tags that the file would hold: edit() of a copy of `before`, settled by its rules. Throws what
    /// actions throw, and exception_io naming the field when the file cannot hold what comes out.
    vantaro::TrackInfoRecord outcome(const Script& script, std::size_t row,
                                     const vantaro::TrackInfoRecord& before, const Action* skipped = nullptr);

    /// The tags that groups are made from have changed.
    void forget_groups() { group_tables_.clear(); }

private:
    const PositionTable& groups_of(Action& action);

    const std::shared_ptr<const TrackList> tracks_;
    /// By kind and parameter text: an action that is edited gets a new table.
    std::map<std::pair<vantaro::Guid, std::string>, PositionTable> group_tables_;
};

} // namespace quorvex
