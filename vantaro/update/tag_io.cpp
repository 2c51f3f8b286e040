#include "vantaro/update/tag_io.h"

#include "vantaro/common/present.h"
#include "vantaro/locations/resolve_location.h"
#include "vantaro/tags/tag_file.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace vantaro::core {

namespace {

/// Passes the exception on that is being handled, as the same kind, with a text that names the location.
[[noreturn]] void rethrow_naming(const std::string& location) {
    const auto named = [&](const std::exception& error) { return location + ": " + error.what(); };
    try {
        throw;
    } catch (const vantaro_io::exception_io_not_found& error) {
        throw vantaro_io::exception_io_not_found(named(error));
    } catch (const vantaro_io::exception_io_denied& error) {
        throw vantaro_io::exception_io_denied(named(error));
    } catch (const vantaro_io::exception_io_no_handler_for_path& error) {
        throw vantaro_io::exception_io_no_handler_for_path(named(error));
    } catch (const vantaro_io::exception_io_data& error) {
        throw vantaro_io::exception_io_data(named(error));
    } catch (const vantaro_io::exception_io& error) {
        throw vantaro_io::exception_io(named(error));
    }
}

} // namespace

/// Changes nothing: an update with it only reads.
class TagIO::ReadOnly final : public HeapService<TrackFilter> {
public:
    explicit ReadOnly(TagIO::Hold hold) : hold_(hold) {}

    bool apply(TrackHandle* handle, const FileStats& stats, TrackInfo& info) override {
        if (hold_ == TagIO::Hold::no)
            return false;
        read_.push_back(handle);
        static_cast<Track&>(*handle).hold(make_service<HeldInfo>(TrackInfoRecord(info), stats, false));
        return false;
    }
    /// The tracks that hold their tags now; sorted, once the update has ended.
    std::vector<TrackHandle*> take_read() {
        std::ranges::sort(read_, std::less<>());
        return std::exchange(read_, {});
    }

private:
    const TagIO::Hold hold_;
    std::vector<TrackHandle*> read_;
};

struct TagIO::Update {
    Update(const std::vector<Track*>& tracks, Ref<TrackFilter> track_filter, ReadOnly* own_reading,
           CompletionNotify* completion, std::unique_ptr<UpdateWatcher> update_watcher,
           const AbortFlag& abort, UpdateSettings settings)
        : filter(std::move(track_filter)), reading(own_reading), notify(completion),
          watcher(std::move(update_watcher)), job(tracks, *filter, *watcher, abort, std::move(settings)) {}

    /// The tracks that are held otherwise than before, sorted.
    std::vector<TrackHandle*> changed_tracks() const {
        return reading ? reading->take_read() : job.written_tracks();
    }

    Ref<TrackFilter> filter;
    /// The filter, when the update only reads. Filters of components are asked for nothing but their
    /// interface: they may have been built without type information.
    ReadOnly* reading;
    Ref<CompletionNotify> notify;
    std::unique_ptr<UpdateWatcher> watcher;
    UpdateJob job;
};

struct TagIO::Task {
    std::shared_ptr<AbortSignal> abort;
    Work work;
    std::jthread thread; // last: it uses the others
};

void UpdateWatcher::on_queued(const std::shared_ptr<AbortSignal>&) {}

std::string UpdateWatcher::summary(const UpdateReport&) const {
    return {};
}

TagIO::TagIO(TrackTable& tracks, MainThread& main_thread, const AbortFlag& interrupt, RunStore& runs,
             unsigned threads, MakeWatcher make_watcher, Report report)
    : tracks_(tracks), main_thread_(main_thread), interrupt_(interrupt), runs_(runs), threads_(threads),
      make_watcher_(std::move(make_watcher)), report_(std::move(report)) {}

TagIO::~TagIO() = default;

void TagIO::resolve_location(const char* location, TrackSink& out, AbortFlag& abort) {
    ++resolved_.locations;
    try {
        const ResolvedLocation found = core::resolve_location(
            location, is_audio_file_name, [&] { return abort.is_aborting() || interrupt_.is_aborting(); });
        for (const std::string& problem : found.problems)
            report_(problem);
        has_failures_ |= !found.problems.empty();
        if (passed_over_.empty() && !found.passed_over.empty()) // for callers that do not ask
            main_thread_.post([this] { report_passed_over(); });
        std::ranges::copy(found.passed_over, std::back_inserter(passed_over_));
        resolved_.tracks += found.paths.size();
        for (const std::string& path : found.paths)
            out.add(&tracks_.get(path, 0));
    } catch (...) {
        has_failures_ = true;
        rethrow_naming(location);
    }
}

void TagIO::report_passed_over() {
    if (const auto passed_over = std::exchange(passed_over_, {}); !passed_over.empty())
        report_(passed_over_line(passed_over));
}

void TagIO::add_change_listener(TagChangeListener* listener) {
    listeners_.push_back(listener);
}

void TagIO::remove_change_listener(TagChangeListener* listener) {
    std::erase(listeners_, listener);
}

void TagIO::update_async(TrackHandle* const* tracks, std::size_t count, TrackFilter* filter,
                         WindowHandle parent, std::uint32_t, CompletionNotify* notify) {
    std::vector<Track*> own_tracks;
    own_tracks.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        own_tracks.push_back(static_cast<Track*>(tracks[i])); // handles come from this host's table only
    auto watcher = make_watcher_(count, parent);
    if (const auto caller = notify ? query_interface<UpdateNotify>(*notify) : Ref<UpdateNotify>())
        if (std::string activity = text_of([&](TextSink& out) { caller->get_activity(out); });
            !activity.empty())
            activity_ = std::move(activity);
    start_update(own_tracks, *filter, std::move(watcher), notify);
}

void TagIO::start_update(const std::vector<Track*>& tracks, TrackFilter& filter,
                         std::unique_ptr<UpdateWatcher> watcher, CompletionNotify* notify) {
    start(tracks, Ref(&filter), nullptr, std::move(watcher), notify);
}

void TagIO::start(const std::vector<Track*>& tracks, Ref<TrackFilter> filter, ReadOnly* reading,
                  std::unique_ptr<UpdateWatcher> watcher, CompletionNotify* notify) {
    started_updates_ += reading == nullptr;
    UpdateSettings settings{
        .runs = runs_,
        .activity = activity_,
        .now = present(),
        .keeps_times = keeps_times_,
        .threads = threads_,
        .reads_only = reading != nullptr,
        .report = recovery_report_,
        .tags = tag_options_,
    };
    const auto abort = std::make_shared<AbortSignal>();
    const auto update = std::make_shared<Update>(tracks, std::move(filter), reading, notify,
                                                 std::move(watcher), *abort, std::move(settings));
    update->watcher->on_queued(abort);
    queue(abort, [this, update](const AbortFlag&) {
        const UpdateReport report = update->job.run();
        return [this, update, report] { end_update(*update, report); };
    });
}

std::shared_ptr<AbortSignal> TagIO::run_in_turn(Work work) {
    auto abort = std::make_shared<AbortSignal>();
    queue(abort, std::move(work));
    return abort;
}

void TagIO::queue(std::shared_ptr<AbortSignal> abort, Work work) {
    tasks_.push_back(std::make_unique<Task>(Task{std::move(abort), std::move(work), {}}));
    if (tasks_.size() == 1)
        start_first();
}

void TagIO::read_tags_of(const std::vector<Track*>& tracks, Hold hold,
                         std::unique_ptr<UpdateWatcher> watcher) {
    const auto reading = make_service<ReadOnly>(hold);
    start(tracks, reading, reading.get(), std::move(watcher), nullptr);
}

void TagIO::start_first() {
    Task& task = *tasks_.front();
    task.thread = std::jthread(
        [this, &task] { main_thread_.post([this, finish = task.work(*task.abort)] { end_first(finish); }); });
}

void TagIO::abort_all() {
    for (const auto& task : tasks_)
        task->abort->set();
}

void TagIO::end_first(const std::function<void()>& finish) {
    const std::unique_ptr<Task> task = std::move(tasks_.front());
    task->thread.join();
    tasks_.pop_front();
    if (!tasks_.empty())
        start_first();
    finish();
}

void TagIO::end_update(const Update& update, const UpdateReport& report) {
    has_failures_ |= report.failed > 0 || !report.problem.empty();
    if (!report.problem.empty())
        report_(report.problem);
    update.watcher->on_end(report);
    tell_listeners(update.changed_tracks());
    if (!update.notify)
        return;
    if (const auto notify = query_interface<UpdateNotify>(*update.notify))
        if (const std::string summary = update.watcher->summary(report); !summary.empty())
            notify->summarise(summary.c_str());
    update.notify->notify(report.aborted ? update_result::aborted
                          : report.failed > 0 || !report.problem.empty()
                              ? update_result::completed_with_errors
                              : update_result::completed);
}

void TagIO::forget(const std::vector<Track*>& tracks) {
    std::vector<TrackHandle*> forgotten;
    for (Track* track : tracks) {
        if (!track->held())
            continue;
        track->hold({});
        forgotten.push_back(track);
    }
    std::ranges::sort(forgotten, std::less<>());
    tell_listeners(forgotten);
}

void TagIO::tell_listeners(const std::vector<TrackHandle*>& changed) {
    if (changed.empty())
        return;
    // A listener may add or remove listeners while it is told.
    for (TagChangeListener* listener : std::vector(listeners_))
        if (std::ranges::find(listeners_, listener) != listeners_.end())
            listener->tags_changed(changed.data(), changed.size());
}

} // namespace vantaro::core
