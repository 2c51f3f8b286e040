// From paths on the command line to tracks.
#pragma once

#include "engine/run_index.h"
#include "quorvex/verbs.h"

namespace quorvex::command {

/// The tracks at all paths, in their order. A path that leads nowhere is reported and left out; the host
/// remembers that there was one.
TrackList resolve_paths(Session& session, const std::vector<std::string>& paths);

/// The same tracks as the host's own objects.
std::vector<vantaro::core::Track*> own_tracks(const TrackList& tracks);

/// The exit status of a verb that has done its work.
int status_of(const Session& session);

} // namespace quorvex::command
