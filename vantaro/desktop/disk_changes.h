// Notices files that others have changed since their tags were read.
//
//     DiskChanges changes(report);
//     changes.look_at(visible_tracks, [&](const std::vector<Track*>& changed) { loader.read(changed); });
//
// Main thread.
#pragma once

#include "vantaro/desktop/background_work.h"
#include "vantaro/tracks/track_table.h"

#include <functional>
#include <vector>

namespace vantaro::core {

class DiskChanges {
public:
    explicit DiskChanges(std::function<void(const std::string& line)> report) : work_(std::move(report)) {}

    /// Compares size and time of each file, in the background, with what they were when its tags were read.
    /// A file that is gone has changed, and so has one that is there and whose tags are not held. Calls
    /// `found` unless nothing has changed. Does nothing while it is still looking at others.
    void look_at(std::vector<Track*> tracks, std::function<void(std::vector<Track*> changed)> found);

private:
    BackgroundWork work_;
};

} // namespace vantaro::core
