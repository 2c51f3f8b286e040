#include "quorvex/tracks.h"

#include "quorvex/input.h"

#include "vantaro/application/exit_status.h"

namespace quorvex::command {

using namespace vantaro;

namespace {

class Collector final : public TrackSink {
public:
    void add(TrackHandle* track) override { tracks.emplace_back(track); }
    TrackList tracks;
};

} // namespace

TrackList resolve_paths(Session& session, const PathOptions& options) {
    Collector collector;
    core::AbortSignal abort; // the host adds its own
    for (const std::string& path : named_paths(session, options)) {
        try {
            session.host.tag_io().resolve_location(path.c_str(), collector, abort);
        } catch (const vantaro_io::exception_io& error) {
            session.terminal.line(error.what());
        }
    }
    session.host.tag_io().report_passed_over();
    if (collector.tracks.empty() && !session.host.tag_io().has_failures())
        session.terminal.line("Nothing to do: there are no music files.");
    return std::move(collector.tracks);
}

std::vector<core::Track*> own_tracks(const TrackList& tracks) {
    std::vector<core::Track*> own;
    own.reserve(tracks.size());
    for (const Ref<TrackHandle>& track : tracks)
        own.push_back(static_cast<core::Track*>(track.get())); // the host linked in makes no others
    return own;
}

int status_of(const Session& session, const TrackList& tracks) {
    namespace status = core::exit_status;
    if (session.host.interrupt().is_aborting())
        return status::interrupted;
    if (session.host.tag_io().has_failures())
        return status::some_failed;
    return tracks.empty() ? status::not_begun : status::done;
}

} // namespace quorvex::command
