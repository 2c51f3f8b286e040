// From paths on the command line to tracks.
#pragma once

#include "engine/run_index.h"
#include "quorvex/verbs.h"

namespace quorvex::command {

/// The tracks at all paths, in their order. A path that leads nowhere is reported and left out; the host
/// remembers that there was one. That there is no track at all is said, unless something else was.
/// Throws: what named_paths throws; vantaro_io::exception_aborted.
TrackList resolve_paths(Session& session, const PathOptions& options);

/// The same tracks as the host's own objects.
std::vector<vantaro::core::Track*> own_tracks(const TrackList& tracks);

/// The exit status of a verb that has done its work on the tracks.
int status_of(const Session& session, const TrackList& tracks);

} // namespace quorvex::command
