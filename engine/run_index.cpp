#include "engine/run_index.h"

#include <map>
#include <string>

namespace quorvex {

using namespace vantaro;

PositionTable whole_list_table(const TrackList& tracks) {
    PositionTable table;
    table.reserve(tracks.size());
    const auto total = static_cast<std::uint32_t>(tracks.size());
    for (std::uint32_t i = 0; i < total; ++i)
        table.insert_or_assign(tracks[i].get(), RunContext{i, total});
    return table;
}

PositionTable group_table(Action& action, const TrackList& tracks) {
    PositionTable table;
    table.reserve(tracks.size());
    std::size_t start = 0;
    const auto close_group = [&](std::size_t end) {
        const auto total = static_cast<std::uint32_t>(end - start);
        for (std::uint32_t i = 0; i < total; ++i)
            table.insert_or_assign(tracks[start + i].get(), RunContext{i, total});
        start = end;
    };
    Guid previous;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        const Guid key = action.get_group_key(tracks[i].get());
        if (i > start && key != previous)
            close_group(i);
        previous = key;
    }
    close_group(tracks.size());
    return table;
}

RunIndex::RunIndex(const Script& script, const TrackList& tracks) : default_table_(whole_list_table(tracks)) {
    std::map<std::pair<Guid, std::string>, const PositionTable*> tables;
    for (const Ref<Action>& action : script) {
        if (!action->uses_group_key()) {
            table_of_action_.push_back(&default_table_);
            continue;
        }
        const PositionTable*& table =
            tables[{action->get_guid(), text_of([&](TextSink& out) { action->get_parameter_text(out); })}];
        if (!table)
            table = &group_tables_.emplace_back(group_table(*action, tracks));
        table_of_action_.push_back(table);
    }
}

const RunContext* RunIndex::find(std::size_t action_number, const TrackHandle* track) const {
    const PositionTable& table = *table_of_action_[action_number];
    const auto found = table.find(track);
    return found == table.end() ? nullptr : &found->second;
}

} // namespace quorvex
