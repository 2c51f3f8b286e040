#include "engine/run.h"

#include "host/access.h"
#include "host/shared/text.h"
#include "script/script_library.h"

namespace quorvex {

using namespace vantaro;

namespace {

/// Marks an update whose caller watches it by the notify.
constexpr std::uint32_t watched_update = 8;

} // namespace

bool ScriptFilter::apply(TrackHandle* track, const FileStats&, TrackInfo& info) {
    bool changed = false;
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        if (const RunContext* at = positions_.find(i, track)) {
            actions_[i]->apply(track, info, at->index, at->total);
            changed = true;
        }
    }
    return changed;
}

std::string description_of(const Script& script) {
    if (script.empty())
        return "a script without actions";
    const std::size_t others = script.size() - 1;
    return first_line(text_of([&](TextSink& out) { script.front()->get_description(out); }))
           + (others == 0 ? "" : " and " + std::to_string(others) + " more");
}

void run_script(const Script& script, const TrackList& tracks, WindowHandle parent,
                CompletionNotify* notify) {
    if (tracks.empty())
        return;
    const auto filter = make_service<ScriptFilter>(script, tracks);
    std::vector<TrackHandle*> handles;
    handles.reserve(tracks.size());
    for (const Ref<TrackHandle>& track : tracks)
        handles.push_back(track.get());
    const auto tag_io = required_service<HostTagIO>();
    service_extension<HostTagIOUpdate>(*tag_io)->update_async(handles.data(), handles.size(), filter.get(),
                                                              parent, watched_update, notify);
}

std::optional<Script> load_script_or_ask(const StoredScript& stored, WindowHandle parent) {
    Script script;
    if (!load_script(stored, script, *make_service<IgnoreCompletion>())
        && uMessageBox(parent, "Some parts of the script failed to load. Continue ?", "Warning",
                       button::ok | button::cancel)
               != button::ok)
        return std::nullopt;
    return script;
}

bool run_stored_script(const StoredScript& stored, const TrackList& tracks, WindowHandle parent,
                       CompletionNotify* notify) {
    if (tracks.empty())
        return false;
    const std::optional<Script> script = load_script_or_ask(stored, parent);
    if (!script)
        return false;
    run_script(*script, tracks, parent, notify);
    return true;
}

} // namespace quorvex
