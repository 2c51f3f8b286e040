#include "vantaro/desktop/run_undo.h"

#include "vantaro/common/present.h"

namespace vantaro::core {

namespace {

class Undo final : public UndoObserver {
public:
    Undo(Host& host, std::unique_ptr<UpdateWatcher> watcher)
        : tracks_(host.tracks()), report_(host.line_reporter()), watcher_(std::move(watcher)) {}

    UpdateWatcher& watcher() { return *watcher_; }

    void run(RunStore& runs, std::uint64_t number, const AbortFlag& abort) {
        try {
            outcome.report = undo_run(runs, number, {false, present(), report_}, *this, abort);
        } catch (const std::exception& error) {
            outcome.error = error.what();
        }
    }
    void on_file(const std::string& path, const std::string& error, std::size_t done,
                 std::size_t total) override {
        TrackOutcome file;
        file.track = &tracks_.get(path, 0);
        file.state = error.empty() ? TrackOutcome::State::written : TrackOutcome::State::failed;
        file.error = error;
        if (error.empty())
            outcome.put_back.push_back(file.track);
        watcher_->on_track(file, done, total);
    }
    UpdateReport report() const {
        UpdateReport report;
        report.total = outcome.report.total;
        report.written = outcome.report.put_back;
        report.failed = outcome.report.failed;
        report.aborted = outcome.report.aborted;
        report.run = outcome.report.run;
        report.problem = outcome.report.problem;
        return report;
    }

    UndoOutcome outcome;

private:
    TrackTable& tracks_;
    const RecoveryReport report_;
    const std::unique_ptr<UpdateWatcher> watcher_;
};

} // namespace

void start_undo(Host& host, std::uint64_t run, std::unique_ptr<UpdateWatcher> watcher,
                const std::function<void(const UndoOutcome& outcome)>& on_end) {
    const auto undo = std::make_shared<Undo>(host, std::move(watcher));
    const auto abort =
        host.tag_io().run_in_turn([undo, &runs = host.runs(), run, on_end](const AbortFlag& flag) {
            undo->run(runs, run, flag);
            return [undo, on_end] {
                undo->watcher().on_end(undo->report());
                on_end(undo->outcome);
            };
        });
    undo->watcher().on_queued(abort);
}

} // namespace vantaro::core
