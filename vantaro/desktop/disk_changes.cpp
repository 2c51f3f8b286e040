#include "vantaro/desktop/disk_changes.h"

#include "host/api/exceptions.h"
#include "vantaro/common/file_identity.h"

#include <optional>

namespace vantaro::core {

namespace {

std::optional<FileStats> stats_of(const Track& track) {
    try {
        return FileIdentity::of(track.path()).stats();
    } catch (const vantaro_io::exception_io&) {
        return std::nullopt;
    }
}

bool has_changed(const Track& track) {
    const Ref<HeldInfo> held = track.held();
    const std::optional<FileStats> now = stats_of(track);
    return held ? now != held->stats() : now.has_value();
}

} // namespace

void DiskChanges::look_at(std::vector<Track*> tracks,
                          std::function<void(std::vector<Track*> changed)> found) {
    if (work_.is_running() || tracks.empty())
        return;
    work_.start([tracks = std::move(tracks), found = std::move(found)](const AbortFlag& abort) {
        std::vector<Track*> changed;
        for (Track* track : tracks) {
            if (abort.is_aborting())
                return BackgroundWork::Finish();
            if (has_changed(*track))
                changed.push_back(track);
        }
        if (changed.empty())
            return BackgroundWork::Finish();
        return BackgroundWork::Finish([changed = std::move(changed), found] { found(changed); });
    });
}

} // namespace vantaro::core
