// Fills the track list: finds the files of locations, and reads the tags of tracks, while the window goes on.
//
//     TrackLoader loader(host, model);
//     loader.on_change = [&] { show(loader.progress()); };
//     loader.add({"/music", "/lists/party.m3u8"});
//     loader.read(tracks, [=] { node->execute(...); });     // before everything else that waits
//
// What goes wrong with a location is a line on the console; a track whose tags cannot be read says so in the
// model as well. Main thread.
#pragma once

#include "vantaro/application/host.h"
#include "vantaro/desktop/background_work.h"
#include "vantaro/desktop/track_model.h"

#include <QTimer>

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace vantaro::core {

class TrackLoader {
public:
    struct Progress {
        bool is_finding_files = false;
        /// Tracks whose tags have been read, of those that were to be read since nothing was.
        std::size_t done = 0;
        std::size_t total = 0;
    };

    /// Both outlive the object.
    TrackLoader(Host& host, TrackModel& model);
    ~TrackLoader();

    /// Appends the tracks of these files, folders, playlists and "file://" URLs to the list, and reads them.
    void add(std::vector<std::string> locations);
    /// Reads the tags of the tracks (again), then calls `then`; never when it is cancelled before.
    void read(std::vector<Track*> tracks, std::function<void()> then = {});
    /// Drops everything that waits. The few files that are being read at the moment still are.
    /// @returns whether something that was to follow a reading is dropped as well.
    bool cancel();

    bool is_busy() const;
    /// Whether an update of the host's is under way that only reads for this object.
    bool is_reading() const { return chunk_ != nullptr; }
    Progress progress() const;

    /// Called a few times a second while it is busy, and at the end.
    std::function<void()> on_change;

private:
    struct Job {
        std::deque<Track*> waiting;
        std::function<void()> then;
    };
    struct Chunk;
    class ChunkWatcher;

    void find_next();
    void append(const std::vector<Track*>& tracks);
    void read_next();
    void end_chunk(bool was_aborted);
    void show_progress();

    Host& host_;
    TrackModel& model_;
    std::deque<std::string> locations_;
    std::deque<Job> jobs_;
    std::shared_ptr<Chunk> chunk_;
    std::size_t done_ = 0;
    std::size_t total_ = 0;
    bool has_added_ = false;
    /// Tracks of the list that wait, or have been read, since nothing was to be read.
    std::unordered_set<const Track*> added_;
    /// What the search under way finds was cancelled.
    bool drops_found_ = false;
    QTimer timer_;
    BackgroundWork finding_;
};

} // namespace vantaro::core
