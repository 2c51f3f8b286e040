#include "engine/dry_run.h"

namespace quorvex {

using namespace vantaro;

void DryRun::edit(const Script& script, std::size_t row, TrackInfo& info, const Action* skipped) {
    TrackHandle* track = tracks()[row].get();
    const RunContext in_list{static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(tracks().size())};
    for (const Ref<Action>& action : script) {
        if (action.get() == skipped)
            continue;
        RunContext at = in_list;
        if (action->uses_group_key()) {
            const PositionTable& groups = groups_of(*action);
            const auto found = groups.find(track);
            if (found == groups.end())
                continue;
            at = found->second;
        }
        action->apply(track, info, at.index, at.total);
    }
}

TrackInfoRecord DryRun::outcome(const Script& script, std::size_t row, const TrackInfoRecord& before,
                                const Action* skipped) {
    TrackInfoRecord after = before;
    edit(script, row, after, skipped);
    if (const FieldRules* rules = before.rules())
        rules->settle(before, after);
    return after;
}

const PositionTable& DryRun::groups_of(Action& action) {
    std::pair key(action.get_guid(), text_of([&](TextSink& out) { action.get_parameter_text(out); }));
    const auto found = group_tables_.find(key);
    if (found != group_tables_.end())
        return found->second;
    return group_tables_.emplace(std::move(key), group_table(action, tracks())).first->second;
}

} // namespace quorvex
