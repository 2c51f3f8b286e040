// RunIndex: where each track stands in a run, for each of the run's actions.
//
//     RunIndex positions(script, tracks);
//     if (const RunContext* at = positions.find(action_number, track))
//         script[action_number]->apply(track, info, at->index, at->total);
//
// Actions that count by group get tables of their own, one for all actions of the same kind and parameter
// text; the others share the default table. Built on the main thread, then read-only: any thread may look up.
#pragma once

#include "script/action.h"

#include <deque>
#include <unordered_map>
#include <vector>

namespace quorvex {

using TrackList = std::vector<vantaro::Ref<vantaro::TrackHandle>>;

/// A track's position, from 0, in the set that is counted, and the size of that set.
struct RunContext {
    std::uint32_t index = 0;
    std::uint32_t total = 0;
};

/// By the identity of the track. A track that stands in the list twice has its last position.
using PositionTable = std::unordered_map<const vantaro::TrackHandle*, RunContext>;

/// Positions in the whole list.
PositionTable whole_list_table(const TrackList& tracks);
/// Positions in groups: a group is a longest run of neighbours in the list whose keys are equal.
PositionTable group_table(Action& action, const TrackList& tracks);

class RunIndex {
public:
    RunIndex(const Script& script, const TrackList& tracks);
    RunIndex(const RunIndex&) = delete;
    RunIndex& operator=(const RunIndex&) = delete;

    /// The track's position for the script's action of that number, or nullptr when it has none.
    const RunContext* find(std::size_t action_number, const vantaro::TrackHandle* track) const;

private:
    PositionTable default_table_;
    std::deque<PositionTable> group_tables_;
    std::vector<const PositionTable*> table_of_action_;
};

} // namespace quorvex
