// HostTagIO as the host carries it out: locations to tracks, and updates that run beside the main thread.
//
//     TagIO tag_io(tracks, main_thread, interrupt, runs, threads, make_watcher, report);
//     registry.add_own<HostTagIO>(tag_io);
//     ...
//     main_thread.run_until([&] { return tag_io.is_idle(); });
//
// Main thread, but for the observers, which are called as UpdateJob says.
#pragma once

#include "vantaro/services/main_thread.h"
#include "vantaro/update/update_job.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace vantaro::core {

/// Watches one update: what a terminal or a window shows of it.
class UpdateWatcher : public UpdateObserver {
public:
    /// On the main thread, before the first on_track. Setting `abort`, at any time, ends this update between
    /// two files.
    virtual void on_queued(const std::shared_ptr<AbortSignal>& abort);
    /// On the main thread, after the last on_track and before the caller of the update hears of the end.
    virtual void on_end(const UpdateReport& report) = 0;
    /// On the main thread, after on_end: what the caller of the update may tell people of it, in one line;
    /// nothing as a rule.
    virtual std::string summary(const UpdateReport& report) const;
};

class TagIO final : public StaticService<HostTagIOUpdate> {
public:
    /// Makes the watcher of an update of so many tracks; `parent` is the window that asked for it.
    using MakeWatcher = std::function<std::unique_ptr<UpdateWatcher>(std::size_t total, WindowHandle parent)>;
    /// Takes a line about a part of a location that had to be left out.
    using Report = std::function<void(const std::string& line)>;

    /// `interrupt`, which outlives the object, ends the resolving of locations whatever its caller's own flag
    /// says.
    TagIO(TrackTable& tracks, MainThread& main_thread, const AbortFlag& interrupt, RunStore& runs,
          unsigned threads, MakeWatcher make_watcher, Report report);
    /// Requires: is_idle().
    ~TagIO();

    void resolve_location(const char* location, TrackSink& out, AbortFlag& abort) override;
    /// Reports the files that locations named since it was last called, and that were passed over, in one
    /// line; done by itself when the main thread comes to rest.
    void report_passed_over();
    void add_change_listener(TagChangeListener* listener) override;
    void remove_change_listener(TagChangeListener* listener) override;
    void update_async(TrackHandle* const* tracks, std::size_t count, TrackFilter* filter, WindowHandle parent,
                      std::uint32_t flags, CompletionNotify* notify) override;

    /// The same with a watcher of the caller's own.
    void start_update(const std::vector<Track*>& tracks, TrackFilter& filter,
                      std::unique_ptr<UpdateWatcher> watcher, CompletionNotify* notify);
    /// Whether the tracks hold their tags once they are read. A million of them take gigabytes.
    enum class Hold { no, yes };
    /// Reads the tags of the tracks. The watcher sees each track as unchanged, or failed. Change listeners
    /// hear of the tracks whose tags are held now.
    void read_tags_of(const std::vector<Track*>& tracks, Hold hold, std::unique_ptr<UpdateWatcher> watcher);

    /// Does other work on the files of tracks: on a thread of its own, after everything that was asked for
    /// before, and before what comes next. `work` throws nothing, and returns what is done afterwards on the
    /// main thread.
    /// @returns what ends the work early, when it heeds the flag.
    using Work = std::function<std::function<void()>(const AbortFlag& abort)>;
    std::shared_ptr<AbortSignal> run_in_turn(Work work);

    /// Drops what is held of the tracks: it is not what the files say any more.
    void forget(const std::vector<Track*>& tracks);

    /// What the updates from now on are about, in the user's words, for the list of runs.
    void set_activity(std::string activity) { activity_ = std::move(activity); }
    /// Whether files keep their times of change in the updates from now on.
    void set_keeps_times(bool keeps_times) { keeps_times_ = keeps_times; }
    /// How tags are stored. Set before anything is read: what tracks hold is what such tags make of it.
    void set_tag_options(TagOptions options) { tag_options_ = std::move(options); }
    const TagOptions& tag_options() const { return tag_options_; }

    /// Takes what there is to say of runs that were cut off before or beside an update; on any thread. Set
    /// while no update is under way.
    void set_recovery_report(RecoveryReport report) { recovery_report_ = std::move(report); }

    /// Whether no update, or other work, is under way or waits.
    bool is_idle() const { return tasks_.empty(); }
    /// Ends all of it between two files, as soon as those being written are done.
    void abort_all();
    /// How many updates were started that may edit, since the start.
    std::size_t started_updates() const { return started_updates_; }
    /// How many locations were asked for, and how many tracks came of them, since the start.
    struct Resolved {
        std::size_t locations = 0;
        std::size_t tracks = 0;
    };
    Resolved resolved() const { return resolved_; }
    /// Whether some location, some part of one, or some track has failed since the start.
    bool has_failures() const { return has_failures_; }

private:
    struct Update;
    struct Task;
    class ReadOnly;

    /// `reading` is the filter, or nullptr for one that may edit.
    void start(const std::vector<Track*>& tracks, Ref<TrackFilter> filter, ReadOnly* reading,
               std::unique_ptr<UpdateWatcher> watcher, CompletionNotify* notify);
    void queue(std::shared_ptr<AbortSignal> abort, Work work);
    void start_first();
    void end_first(const std::function<void()>& finish);
    void end_update(const Update& update, const UpdateReport& report);
    void tell_listeners(const std::vector<TrackHandle*>& changed);

    TrackTable& tracks_;
    MainThread& main_thread_;
    const AbortFlag& interrupt_;
    RunStore& runs_;
    const unsigned threads_;
    const MakeWatcher make_watcher_;
    const Report report_;
    std::vector<TagChangeListener*> listeners_;
    /// The first one is under way, the others wait: two might be about the same file.
    std::deque<std::unique_ptr<Task>> tasks_;
    bool has_failures_ = false;
    std::vector<std::string> passed_over_;
    std::size_t started_updates_ = 0;
    Resolved resolved_;
    std::string activity_;
    bool keeps_times_ = false;
    TagOptions tag_options_;
    RecoveryReport recovery_report_ = [](const std::string&) {};
};

} // namespace vantaro::core
