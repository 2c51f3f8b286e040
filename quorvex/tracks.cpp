#include "quorvex/tracks.h"

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

TrackList resolve_paths(Session& session, const std::vector<std::string>& paths) {
    Collector collector;
    core::AbortSignal abort; // the host adds its own
    for (const std::string& path : paths) {
        try {
            session.host.tag_io().resolve_location(path.c_str(), collector, abort);
        } catch (const vantaro_io::exception_io& error) {
            session.terminal.line(error.what());
        } catch (const vantaro_io::exception_aborted&) {
            return {};
        }
    }
    return std::move(collector.tracks);
}

std::vector<core::Track*> own_tracks(const TrackList& tracks) {
    std::vector<core::Track*> own;
    own.reserve(tracks.size());
    for (const Ref<TrackHandle>& track : tracks)
        own.push_back(static_cast<core::Track*>(track.get())); // the host linked in makes no others
    return own;
}

int status_of(const Session& session) {
    namespace status = core::exit_status;
    if (session.host.interrupt().is_aborting())
        return status::interrupted;
    return session.host.tag_io().has_failures() ? status::some_failed : status::done;
}

} // namespace quorvex::command
