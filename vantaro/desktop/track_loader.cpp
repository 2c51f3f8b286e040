#include "vantaro/desktop/track_loader.h"

#include "vantaro/locations/resolve_location.h"
#include "vantaro/tags/tag_file.h"
#include "vantaro/windows/shown_text.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <mutex>
#include <unordered_set>
#include <utility>

namespace vantaro::core {

namespace {

/// Updates of the host's wait for each other: what a person starts meanwhile waits for one chunk at most.
constexpr std::size_t chunk_size = 256;

/// Rows that are put into the list at a time.
constexpr std::size_t batch_size = 5000;

constexpr int progress_interval = 100; // milliseconds

} // namespace

/// Tracks that are being read.
struct TrackLoader::Chunk {
    std::vector<Track*> tracks;
    /// Set back when the loader goes.
    TrackLoader* loader = nullptr;
    std::function<void()> then;
    bool is_cancelled = false;
    std::atomic<std::size_t> done{0};
    std::mutex mutex; // guards the two below
    std::vector<std::pair<Track*, std::string>> failures;
    std::unordered_set<Track*> finished;
};

class TrackLoader::ChunkWatcher final : public UpdateWatcher {
public:
    explicit ChunkWatcher(std::shared_ptr<Chunk> chunk) : chunk_(std::move(chunk)) {}

    void on_track(const TrackOutcome& outcome, std::size_t done, std::size_t) override {
        chunk_->done = done;
        const std::lock_guard lock(chunk_->mutex);
        chunk_->finished.insert(outcome.track);
        if (outcome.state == TrackOutcome::State::failed)
            chunk_->failures.emplace_back(outcome.track, outcome.error);
    }
    void on_end(const UpdateReport& report) override {
        if (chunk_->loader)
            chunk_->loader->end_chunk(report.aborted);
    }

private:
    const std::shared_ptr<Chunk> chunk_;
};

TrackLoader::TrackLoader(Host& host, TrackModel& model)
    : host_(host), model_(model), finding_([&host](const std::string& line) { host.report(line); }) {
    timer_.setInterval(progress_interval);
    QObject::connect(&timer_, &QTimer::timeout, [this] { show_progress(); });
}

TrackLoader::~TrackLoader() {
    if (chunk_)
        chunk_->loader = nullptr;
}

bool TrackLoader::is_busy() const {
    return finding_.is_running() || !locations_.empty() || chunk_ || !jobs_.empty();
}

TrackLoader::Progress TrackLoader::progress() const {
    return {finding_.is_running(), done_ + (chunk_ ? chunk_->done.load() : 0), total_};
}

void TrackLoader::add(std::vector<std::string> locations) {
    std::ranges::move(locations, std::back_inserter(locations_));
    find_next();
}

void TrackLoader::find_next() {
    if (finding_.is_running() || locations_.empty())
        return;
    timer_.start();
    finding_.start([this, location = std::move(locations_.front())](const AbortFlag& abort) {
        std::vector<Track*> tracks;
        const auto hand_over = [&] {
            finding_.post([this, batch = std::exchange(tracks, {})] { append(batch); });
        };
        try {
            const ResolvedLocation found =
                resolve_location(location, is_audio_file_name, [&] { return abort.is_aborting(); });
            for (const std::string& problem : found.problems)
                host_.report(problem);
            if (!found.passed_over.empty())
                host_.report(passed_over_line(found.passed_over));
            for (const std::string& path : found.paths) {
                tracks.push_back(&host_.tracks().get(path, 0));
                if (tracks.size() == batch_size)
                    hand_over();
            }
        } catch (const vantaro_io::exception_aborted&) {
            tracks.clear();
        } catch (const std::exception& error) {
            host_.report(location + ": " + error.what());
        }
        hand_over();
        return BackgroundWork::Finish([this] {
            drops_found_ = false;
            find_next();
            show_progress();
        });
    });
    locations_.pop_front();
}

void TrackLoader::append(const std::vector<Track*>& tracks) {
    if (drops_found_)
        return;
    has_added_ |= !model_.add(tracks).empty();
    // Those that were there already may be left over from a reading that was cancelled.
    std::vector<Track*> unread;
    std::ranges::copy_if(tracks, std::back_inserter(unread),
                         [this](Track* track) { return !track->held() && added_.insert(track).second; });
    if (unread.empty())
        return;
    total_ += unread.size();
    if (jobs_.empty() || jobs_.back().then)
        jobs_.emplace_back();
    std::ranges::copy(unread, std::back_inserter(jobs_.back().waiting));
    read_next();
}

void TrackLoader::read(std::vector<Track*> tracks, std::function<void()> then) {
    total_ += tracks.size();
    jobs_.push_front({{tracks.begin(), tracks.end()}, std::move(then)});
    timer_.start();
    read_next();
}

void TrackLoader::read_next() {
    if (chunk_ || jobs_.empty())
        return;
    Job& job = jobs_.front();
    const auto count = static_cast<std::ptrdiff_t>(std::min(chunk_size, job.waiting.size()));
    chunk_ = std::make_shared<Chunk>();
    chunk_->loader = this;
    chunk_->tracks.assign(job.waiting.begin(), job.waiting.begin() + count);
    job.waiting.erase(job.waiting.begin(), job.waiting.begin() + count);
    if (job.waiting.empty()) {
        // What follows a job follows its last chunk.
        if (job.then)
            chunk_->then = std::move(job.then);
        jobs_.pop_front();
    }
    host_.tag_io().read_tags_of(chunk_->tracks, TagIO::Hold::yes, std::make_unique<ChunkWatcher>(chunk_));
}

void TrackLoader::end_chunk(bool was_aborted) {
    const std::shared_ptr<Chunk> chunk = std::exchange(chunk_, nullptr);
    std::unordered_set<const Track*> failed;
    std::vector<Track*> unreadable;
    for (const auto& [track, error] : chunk->failures) {
        failed.insert(track);
        unreadable.push_back(track);
        const QString reason = shown_text(error);
        // A file that stays as bad is looked at again and again, and told of once.
        if (model_.failure(*track) != reason)
            host_.report(std::string(track->path()) + ": " + error);
        model_.set_failure(*track, reason);
    }
    host_.tag_io().forget(unreadable);
    for (Track* track : chunk->tracks)
        if (!failed.contains(track))
            model_.set_failure(*track, {});
    std::function<void()> then = std::move(chunk->then);
    if (was_aborted && !chunk->is_cancelled) {
        // Somebody's update was cancelled, and the reading with it.
        std::deque<Track*> rest;
        std::ranges::copy_if(chunk->tracks, std::back_inserter(rest),
                             [&](Track* track) { return !chunk->finished.contains(track); });
        done_ += chunk->tracks.size() - rest.size();
        if (!rest.empty())
            jobs_.push_front({std::move(rest), std::exchange(then, {})});
    } else {
        done_ += chunk->tracks.size();
    }
    read_next();
    if (!is_busy())
        show_progress();
    if (then && !chunk->is_cancelled)
        then();
}

bool TrackLoader::cancel() {
    locations_.clear();
    bool has_dropped_any = chunk_ && !chunk_->is_cancelled && chunk_->then;
    drops_found_ = finding_.is_running();
    finding_.cancel();
    for (const Job& job : std::exchange(jobs_, {})) {
        total_ -= job.waiting.size();
        has_dropped_any |= job.then != nullptr;
    }
    added_.clear();
    if (chunk_)
        chunk_->is_cancelled = true;
    show_progress();
    return has_dropped_any;
}

void TrackLoader::show_progress() {
    if (!is_busy()) {
        timer_.stop();
        done_ = total_ = 0;
        added_.clear();
        if (std::exchange(has_added_, false))
            model_.sort_again();
    }
    model_.refresh();
    if (on_change)
        on_change();
}

} // namespace vantaro::core
