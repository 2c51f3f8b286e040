#include "vantaro/update/update_job.h"

#include "vantaro/journal/run_writer.h"
#include "vantaro/tags/tag_file.h"
#include "vantaro/update/shared_files.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
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
          settings_(std::move(settings)),
          writer_(settings_.runs, {settings_.now, settings_.activity, 0}, settings_.report) {}

    UpdateReport run() {
        recover_runs(settings_.runs, settings_.report); // not a half-written file is read
        {
            std::vector<std::jthread> readers;
            for (unsigned i = 0; i < settings_.threads; ++i)
                readers.emplace_back([this] { guarded([this] { read_ahead(); }); });
            std::vector<std::jthread> writers;
            for (unsigned i = 0; i < settings_.threads; ++i)
                writers.emplace_back([this] { guarded([this] { write_behind(); }); });
            guarded([this] { filter_all(); });
            close();
        }
        writer_.wait();
        // Further names of the files that were written last.
        guarded([this] {
            for (; !to_write_.empty() && !abort_.is_aborting() && broken_.empty(); to_write_.pop_front())
                write(std::move(to_write_.front()));
        });
        try {
            report_.run = writer_.finish();
        } catch (const std::exception& error) {
            report_.problem = error.what();
        }
        if (const std::string why = writer_.why_not_begun(); !why.empty())
            report_.problem = "Nothing was written: " + why;
        if (!broken_.empty())
            report_.problem = "The update could not be carried on: " + broken_;
        std::ranges::sort(written_);
        report_.total = tracks_.size();
        report_.aborted = abort_.is_aborting() && done_ < tracks_.size();
        return report_;
    }

    const std::vector<TrackHandle*>& written() const { return written_; }

private:
    struct Item {
        std::size_t index = 0;
        FileStatus file;
        /// The file and all tracks that lead to it.
        std::shared_ptr<SharedFiles::File> shared;
        /// Left in the middle, because of the abort.
        bool aborted = false;
        std::vector<FieldChange> changes;
        /// What becomes of it once it is written.
        std::optional<TagVersionChange> tag_version;
        TrackOutcome outcome;

        void fail(const char* why) {
            outcome.state = TrackOutcome::State::failed;
            outcome.error = why;
        }
        bool failed() const { return outcome.state == TrackOutcome::State::failed; }
    };
    using ItemPointer = std::unique_ptr<Item>;

    /// What fails beyond a file, for want of memory mostly, ends the update, not the program.
    template <class Work>
    void guarded(const Work& work) noexcept {
        try {
            work();
        } catch (const std::exception& error) {
            const std::lock_guard lock(mutex_);
            broken_ = error.what();
            closed_ = true;
            room_to_read_.notify_all();
            item_read_.notify_all();
            item_to_write_.notify_all();
        }
    }

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
        try {
            const std::string path = item.outcome.track->path();
            item.file = FileStatus::of(path);
            if (!settings_.reads_only)
                item.shared = files_.join(item.file.identity, item.index);
            if (is_first(item))
                read_whole(item, path);
        } catch (const vantaro_io::exception_aborted&) {
            item.aborted = true;
        } catch (const std::exception& error) {
            item.fail(error.what());
        }
    }

    /// What is no music may be in the midst of being written: it is looked at again when nobody is.
    void read_whole(Item& item, const std::string& path) {
        try {
            read_tags(path, item.outcome.before, &abort_, settings_.tags);
        } catch (const vantaro_io::exception_io_data&) {
            const OpenFile file = OpenFile::open_undisturbed(settings_.runs.calls(), path);
            item.file = FileStatus::of(file.status());
            read_tags(file, item.outcome.before, &abort_, settings_.tags);
        }
    }

    /// Whether no other track before it leads to the same file: for certain when its turn has come in list
    /// order, since whatever precedes it has joined its file then.
    bool is_first(const Item& item) const {
        return !item.shared || files_.first_of(*item.shared) == item.index;
    }

    void filter_all() {
        for (std::size_t index = 0; index < tracks_.size() && !abort_.is_aborting(); ++index) {
            ItemPointer item;
            {
                std::unique_lock lock(mutex_);
                // Readers stop early only when the job is aborted.
                item_read_.wait(lock, [&] {
                    return read_items_.contains(index) || abort_.is_aborting() || !broken_.empty();
                });
                const auto found = read_items_.find(index);
                if (found == read_items_.end())
                    return;
                item = std::move(found->second);
                read_items_.erase(found);
            }
            if (item->aborted)
                return;
            if (!is_first(*item)) {
                wait_for_first(std::move(item));
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
            if (!filter_.apply(outcome.track, item.file.identity.stats(), outcome.after))
                return;
            outcome.before.rules()->settle(outcome.before, outcome.after);
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
                if (to_write_.empty() || abort_.is_aborting() || !broken_.empty())
                    return;
                item = std::move(to_write_.front());
                to_write_.pop_front();
            }
            write(std::move(item));
        }
    }

    void write(ItemPointer item) {
        if (!is_first(*item)) {
            follow(*files_.outcome_of(*item->shared), item->outcome, settings_.tags);
            finish(std::move(item));
            return;
        }
        std::optional<PreparedChange> change;
        if (!item->failed() && !item->changes.empty()) {
            try {
                change = prepare(*item);
            } catch (const vantaro_io::exception_aborted&) {
                item->aborted = true;
            } catch (const std::exception& error) {
                fail_to_write(*item, error.what());
            }
        }
        if (!change) {
            finish(std::move(item));
            return;
        }
        auto shared = std::make_shared<ItemPointer>(std::move(item)); // the writer's callbacks can be copied
        writer_.submit(std::move(*change), [this, shared](const WrittenFile& written) {
            guarded([&] {
                take_outcome(**shared, written);
                finish(std::move(*shared));
            });
        });
    }

    void fail_to_write(Item& item, const std::string& why) {
        item.fail(why.c_str());
        item.outcome.is_not_begun = why == writer_.why_not_begun();
    }

    /// Nothing when the file says the same already.
    std::optional<PreparedChange> prepare(Item& item) {
        OpenFile file = OpenFile::open_for_change(settings_.runs.calls(), item.outcome.track->path());
        if (const FileStatus now = FileStatus::of(file.status()); now != item.file)
            look_again(item, file, now);
        WriteResult result = write_tags(file, item.changes, &abort_, settings_.tags);
        // What a preview has shown is what the file will hold, or nothing is written.
        const std::vector<FieldChange> broken = field_changes(result.fields, item.outcome.after.fields());
        if (!broken.empty())
            throw vantaro_io::exception_io(broken.front().name
                                           + ": the file would not hold what a preview shows");
        item.outcome.after.set_fields(std::move(result.fields));
        if (result.edit.empty())
            return std::nullopt;
        item.tag_version = std::move(result.tag_version);
        ChangeOptions options;
        options.seen = item.file;
        if (settings_.keeps_times)
            options.modified = item.file.identity.modified;
        PreparedChange change = writer_.prepare(std::move(file), result.edit, options);
        if (change.replacement)
            files_.expect_successor(item.shared, item.file.identity, change.replacement->file().identity());
        return change;
    }

    /// Opening a file for writing can be a change of it (of a lower layer, on an overlay), and other hosts
    /// set times late. What the edit was made of is its tags.
    void look_again(Item& item, const OpenFile& file, const FileStatus& now) {
        TrackInfoRecord present;
        read_tags(file, present, &abort_, settings_.tags);
        if (present.fields() != item.outcome.before.fields())
            throw vantaro_io::exception_io("The file has changed since its tags were read");
        if (now.identity.inode != item.file.identity.inode)
            files_.expect_successor(item.shared, item.file.identity, now.identity);
        item.file = now;
    }

    void take_outcome(Item& item, const WrittenFile& written) {
        if (!written.error.empty()) {
            fail_to_write(item, written.error);
            return;
        }
        if (written.identity.inode != item.file.identity.inode)
            files_.expect_successor(item.shared, item.file.identity, written.identity);
        item.outcome.tag_version = std::move(item.tag_version);
        set_written(item.outcome, written.identity);
    }

    void wait_for_first(ItemPointer item) {
        const std::lock_guard lock(mutex_);
        if (files_.outcome_of(*item->shared))
            add_to_write(std::move(item));
        else
            waiting_[item->shared.get()].push_back(std::move(item));
    }

    /// Requires: mutex_ is held.
    void add_to_write(ItemPointer item) {
        to_write_.push_back(std::move(item));
        item_to_write_.notify_one();
    }

    void finish(ItemPointer item) {
        {
            const std::lock_guard lock(mutex_);
            if (item->shared && is_first(*item))
                end_first(*item);
            finished_.emplace(item->index, std::move(item));
        }
        report_finished();
    }

    /// Requires: mutex_ is held.
    void end_first(const Item& item) {
        if (item.failed())
            files_.forget_successor(item.shared);
        files_.set_outcome(*item.shared, file_outcome(item.outcome));
        if (const auto waiting = waiting_.extract(item.shared.get()))
            for (ItemPointer& further : waiting.mapped())
                add_to_write(std::move(further));
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
                if (!item->aborted) // nothing has come of it
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
    SharedFiles files_;

    std::mutex mutex_; // guards what follows
    std::condition_variable room_to_read_;
    std::condition_variable item_read_;
    std::condition_variable item_to_write_;
    std::size_t next_to_read_ = 0;
    std::map<std::size_t, ItemPointer> read_items_;
    std::deque<ItemPointer> to_write_;
    std::map<std::size_t, ItemPointer> finished_;
    std::size_t reported_ = 0; // every item before this one is reported
    bool reporting_ = false;
    /// Tracks whose files are being edited for another one.
    std::map<const SharedFiles::File*, std::vector<ItemPointer>> waiting_;
    bool closed_ = false;
    std::string broken_; // why it cannot go on

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
