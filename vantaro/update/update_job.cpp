#include "vantaro/update/update_job.h"

#include "vantaro/journal/run_writer.h"
#include "vantaro/safe_write/edit_stream.h"
#include "vantaro/tags/tag_file.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <unordered_set>

namespace vantaro::core {

namespace {

/// How many tracks may be between being read and being reported.
constexpr std::size_t window = 256;

std::vector<Track*> without_duplicates(const std::vector<Track*>& tracks) {
    std::unordered_set<const Track*> seen;
    std::vector<Track*> distinct;
    for (Track* track : tracks)
        if (seen.insert(track).second)
            distinct.push_back(track);
    return distinct;
}

} // namespace

class UpdateJob::Pipeline {
public:
    Pipeline(const std::vector<Track*>& tracks, TrackFilter& filter, UpdateObserver& observer,
             const AbortFlag& abort, UpdateSettings settings)
        : tracks_(without_duplicates(tracks)), filter_(filter), observer_(observer), abort_(abort),
          settings_(std::move(settings)), writer_(settings_.runs, {settings_.now, settings_.activity, 0}) {}

    UpdateReport run() {
        {
            std::vector<std::jthread> readers;
            for (unsigned i = 0; i < settings_.threads; ++i)
                readers.emplace_back([this] { read_ahead(); });
            std::vector<std::jthread> writers;
            for (unsigned i = 0; i < settings_.threads; ++i)
                writers.emplace_back([this] { write_behind(); });
            filter_all();
            close();
        }
        writer_.wait();
        // Other paths to files that were in the works: one by one, now that nothing else is.
        for (ItemPointer& item : other_names_) {
            if (abort_.is_aborting())
                break;
            read(*item);
            edit(*item);
            write(std::move(item));
            writer_.wait();
        }
        try {
            report_.run = writer_.finish();
        } catch (const std::exception& error) {
            report_.problem = error.what();
        }
        std::ranges::sort(written_);
        report_.total = tracks_.size();
        report_.aborted = abort_.is_aborting() && done_ < tracks_.size();
        return report_;
    }

    const std::vector<TrackHandle*>& written() const { return written_; }

private:
    struct Item {
        std::size_t index = 0;
        FileIdentity file;
        bool claimed = false;
        /// Another track that leads to the same file was in the works when this one was to be read.
        bool other_name = false;
        std::vector<FieldChange> changes;
        TrackOutcome outcome;

        void fail(const char* why) {
            outcome.state = TrackOutcome::State::failed;
            outcome.error = why;
        }
        bool failed() const { return outcome.state == TrackOutcome::State::failed; }
    };
    using ItemPointer = std::unique_ptr<Item>;

    void read_ahead() {
        while (true) {
            auto item = std::make_unique<Item>();
            {
                std::unique_lock lock(mutex_);
                room_to_read_.wait(lock, [&] { return closed_ || next_to_read_ < reported_ + window; });
                if (closed_ || next_to_read_ == tracks_.size() || abort_.is_aborting()) {
                    item_read_.notify_one(); // who waits for an item learns of the abort
                    return;
                }
                item->index = next_to_read_++;
            }
            item->outcome.track = tracks_[item->index];
            read(*item);
            const std::lock_guard lock(mutex_);
            const std::size_t index = item->index;
            read_items_.emplace(index, std::move(item));
            item_read_.notify_one();
        }
    }

    void read(Item& item) {
        item.other_name = false;
        const std::string path = item.outcome.track->path();
        try {
            item.file = FileIdentity::of(path);
            if (!claim(item)) {
                item.other_name = true;
                return;
            }
            read_tags(path, item.outcome.before);
        } catch (const std::exception& error) {
            item.fail(error.what());
        }
    }

    bool claim(Item& item) {
        const std::lock_guard lock(mutex_);
        item.claimed = files_in_work_.emplace(item.file.device, item.file.inode).second;
        return item.claimed;
    }

    void filter_all() {
        for (std::size_t index = 0; index < tracks_.size() && !abort_.is_aborting(); ++index) {
            ItemPointer item;
            {
                std::unique_lock lock(mutex_);
                // Readers stop early only when the job is aborted.
                item_read_.wait(lock, [&] { return read_items_.contains(index) || abort_.is_aborting(); });
                const auto found = read_items_.find(index);
                if (found == read_items_.end())
                    return;
                item = std::move(found->second);
                read_items_.erase(found);
            }
            if (item->other_name) {
                set_aside(std::move(item));
                continue;
            }
            edit(*item);
            if (item->changes.empty()) {
                finish(std::move(item));
                continue;
            }
            const std::lock_guard lock(mutex_);
            to_write_.push_back(std::move(item));
            item_to_write_.notify_one();
        }
    }

    void edit(Item& item) {
        if (item.failed())
            return;
        TrackOutcome& outcome = item.outcome;
        try {
            outcome.after.copy(outcome.before);
            if (filter_.apply(outcome.track, item.file.stats(), outcome.after))
                item.changes = field_changes(outcome.before.fields(), outcome.after.fields());
        } catch (const std::exception& error) {
            item.fail(error.what());
        }
    }

    void write_behind() {
        while (true) {
            ItemPointer item;
            {
                std::unique_lock lock(mutex_);
                item_to_write_.wait(lock, [&] { return closed_ || !to_write_.empty(); });
                if (to_write_.empty() || abort_.is_aborting())
                    return;
                item = std::move(to_write_.front());
                to_write_.pop_front();
            }
            write(std::move(item));
        }
    }

    void write(ItemPointer item) {
        std::optional<PreparedChange> change;
        if (!item->failed() && !item->changes.empty()) {
            try {
                change = prepare(*item);
            } catch (const std::exception& error) {
                item->fail(error.what());
            }
        }
        if (!change) {
            finish(std::move(item));
            return;
        }
        auto shared = std::make_shared<ItemPointer>(std::move(item)); // the writer's callbacks can be copied
        writer_.submit(std::move(*change), [this, shared](const WrittenFile& written) {
            take_outcome(**shared, written);
            finish(std::move(*shared));
        });
    }

    /// Nothing when the file says the same already.
    std::optional<PreparedChange> prepare(Item& item) {
        OpenFile file = OpenFile::open_for_change(settings_.runs.calls(), item.outcome.track->path());
        if (file.identity() != item.file)
            throw vantaro_io::exception_io("The file has changed since its tags were read");
        EditStream stream(file);
        WriteResult result = write_tags(stream, item.changes);
        item.outcome.after.set_fields(std::move(result.fields));
        const FileEdit edit = stream.edit();
        if (edit.empty())
            return std::nullopt;
        ChangeOptions options;
        if (settings_.keeps_times)
            options.modified = item.file.modified;
        return writer_.prepare(std::move(file), edit, options);
    }

    static void take_outcome(Item& item, const WrittenFile& written) {
        if (!written.error.empty()) {
            item.fail(written.error.c_str());
            return;
        }
        item.outcome.state = TrackOutcome::State::written;
        if (Track& track = *item.outcome.track; track.held())
            track.hold(make_service<HeldInfo>(item.outcome.after, written.identity.stats(), false));
    }

    /// Keeps an item for later, and lets those behind it be reported.
    void set_aside(ItemPointer item) {
        {
            const std::lock_guard lock(mutex_);
            finished_.emplace(item->index, nullptr);
            other_names_.push_back(std::move(item));
        }
        report_finished();
    }

    void finish(ItemPointer item) {
        {
            const std::lock_guard lock(mutex_);
            if (std::exchange(item->claimed, false))
                files_in_work_.erase({item->file.device, item->file.inode});
            finished_.emplace(item->index, std::move(item));
        }
        report_finished();
    }

    /// Reports, in list order, what is finished up to the first item that is not. One thread reports at a
    /// time; what others finish meanwhile, it reports too.
    void report_finished() {
        std::unique_lock lock(mutex_);
        if (std::exchange(reporting_, true))
            return;
        while (true) {
            std::vector<ItemPointer> ready;
            while (!finished_.empty() && finished_.begin()->first <= reported_) {
                reported_ = std::max(reported_, finished_.begin()->first + 1);
                ready.push_back(std::move(finished_.begin()->second));
                finished_.erase(finished_.begin());
            }
            if (ready.empty())
                break;
            room_to_read_.notify_all();
            lock.unlock();
            for (const ItemPointer& item : ready)
                if (item)
                    report(*item);
            lock.lock();
        }
        reporting_ = false;
    }

    void report(const Item& item) {
        switch (item.outcome.state) {
        case TrackOutcome::State::unchanged:
            ++report_.unchanged;
            break;
        case TrackOutcome::State::written:
            ++report_.written;
            written_.push_back(item.outcome.track);
            break;
        case TrackOutcome::State::failed:
            ++report_.failed;
            break;
        }
        observer_.on_track(item.outcome, ++done_, tracks_.size());
    }

    void close() {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        room_to_read_.notify_all();
        item_to_write_.notify_all();
    }

    const std::vector<Track*> tracks_;
    TrackFilter& filter_;
    UpdateObserver& observer_;
    const AbortFlag& abort_;
    const UpdateSettings settings_;

    std::mutex mutex_; // guards what follows
    std::condition_variable room_to_read_;
    std::condition_variable item_read_;
    std::condition_variable item_to_write_;
    std::size_t next_to_read_ = 0;
    std::map<std::size_t, ItemPointer> read_items_;
    std::deque<ItemPointer> to_write_;
    std::map<std::size_t, ItemPointer> finished_;
    std::size_t reported_ = 0; // every item before this one is reported, or set aside
    bool reporting_ = false;
    std::set<std::pair<std::uint64_t, std::uint64_t>> files_in_work_; // device and inode
    std::vector<ItemPointer> other_names_;
    bool closed_ = false;

    // Touched by the thread that reports, and by run() when the others have ended.
    std::size_t done_ = 0;
    UpdateReport report_;
    std::vector<TrackHandle*> written_;

    RunWriter writer_; // last: its thread uses the others
};

UpdateJob::UpdateJob(const std::vector<Track*>& tracks, TrackFilter& filter, UpdateObserver& observer,
                     const AbortFlag& abort, UpdateSettings settings)
    : pipeline_(std::make_unique<Pipeline>(tracks, filter, observer, abort, std::move(settings))) {}

UpdateJob::~UpdateJob() = default;

UpdateReport UpdateJob::run() {
    return pipeline_->run();
}

const std::vector<TrackHandle*>& UpdateJob::written_tracks() const {
    return pipeline_->written();
}

} // namespace vantaro::core
