// Running scripts over tracks.
//
//     run_script(script, tracks, window, done);       // returns at once, done hears of the end
//
// Main thread. The filter's own operation is called by the host on one of its threads, one call at a time.
#pragma once

#include "engine/run_index.h"
#include "host/api/tag_io.h"
#include "script/stored_script.h"

#include <optional>
#include <string>

namespace quorvex {

/// Applies a script to the tracks that the host hands it. Keeps the actions alive, whatever becomes of the
/// script that it was made from.
class ScriptFilter final : public vantaro::HeapService<vantaro::TrackFilter> {
public:
    ScriptFilter(const Script& script, const TrackList& tracks)
        : actions_(script), positions_(script, tracks) {}

    /// Returns whether any action ran on the track. What an action throws passes to the host.
    bool apply(vantaro::TrackHandle* track, const vantaro::FileStats& stats,
               vantaro::TrackInfo& info) override;

private:
    const Script actions_;
    const RunIndex positions_;
};

/// The live actions of a stored script. When some of it cannot be loaded, asks whether to go on with the
/// rest; nothing when the answer is no.
std::optional<Script> load_script_or_ask(const StoredScript& stored, vantaro::WindowHandle parent);

/// What a run of a script without a name is called: its first action, and how many follow.
std::string description_of(const Script& script);

/// Starts editing the tracks. `notify` (may be nullptr) hears of the end as vantaro::update_result says; with
/// no tracks nothing happens and it is never called.
void run_script(const Script& script, const TrackList& tracks, vantaro::WindowHandle parent,
                vantaro::CompletionNotify* notify);

/// The same for a stored script: when some of it cannot be loaded, asks whether to go on with the rest. When
/// the answer is no, or without tracks, nothing happens and `notify` is never called.
/// Returns whether a run was started.
bool run_stored_script(const StoredScript& stored, const TrackList& tracks, vantaro::WindowHandle parent,
                       vantaro::CompletionNotify* notify);

} // namespace quorvex
