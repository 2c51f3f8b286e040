// PreviewReader: reads, in the background, the tags of tracks of which the host does not hold all, so that a
// preview works on what is in the files.
//
//     PreviewReader reader([&](std::size_t row, auto tags) { rows.hold(row, tags); list.redraw(row); });
//     reader.start(rows.shared_tracks());
//
// Main thread; results are delivered there too, through the host's queue.
#pragma once

#include "engine/run_index.h"
#include "host/api/track.h"
#include "host/api/track_info_record.h"

#include <functional>
#include <memory>

namespace quorvex {

/// What a file says of one track.
struct ReadTags {
    vantaro::TrackInfoRecord info;
    vantaro::FileStats stats;
};

class PreviewReader {
public:
    using Deliver = std::function<void(std::size_t row, std::shared_ptr<const ReadTags> tags)>;

    /// `deliver` is called for every row that was read, and after a cancel no more.
    explicit PreviewReader(Deliver deliver) : deliver_(std::move(deliver)) {}
    ~PreviewReader() { cancel(); }
    PreviewReader(const PreviewReader&) = delete;
    PreviewReader& operator=(const PreviewReader&) = delete;

    /// Cancels what is under way, and reads these tracks in order, those left out of which the host holds
    /// all. A track that cannot be read is left out too. Throws: std::system_error when the system has no
    /// thread or file descriptor left.
    void start(std::shared_ptr<const TrackList> tracks);
    /// Does not wait.
    void cancel();

private:
    struct Job;
    class Delivery;

    const Deliver deliver_;
    std::shared_ptr<Job> job_;
};

} // namespace quorvex
