#include "quorvex/output.h"
#include "quorvex/verbs.h"

#include "host/api/exceptions.h"
#include "vantaro/application/exit_status.h"
#include "vantaro/common/present.h"
#include "vantaro/journal/undo.h"
#include "vantaro/terminal/failure_lines.h"

#include <algorithm>

namespace quorvex::command {

using namespace vantaro;

namespace {

class PrintUndo final : public core::UndoObserver {
public:
    PrintUndo(core::Terminal& terminal, bool json)
        : terminal_(terminal), failures_(terminal, failures_told(json)), json_(json) {}

    void on_file(const std::string& path, const std::string& error, std::size_t done,
                 std::size_t total) override {
        if (!error.empty())
            failures_.add(path, error);
        if (json_) {
            Json object{{"path", path}};
            if (!error.empty())
                object["error"] = error;
            print_json(object);
        }
        terminal_.progress("Undoing", done, total);
    }
    void end() {
        terminal_.end_progress();
        failures_.end();
    }

private:
    core::Terminal& terminal_;
    core::FailureLines failures_;
    const bool json_;
};

/// The run of that number, or for 0 the newest that can be undone. One that is not there is left for the undo
/// itself to report.
core::RunSummary run_to_undo(const core::RunStore& store, std::uint64_t number) {
    const std::vector<core::RunSummary> runs = store.runs();
    if (number == 0) {
        const auto newest = core::newest_run_to_undo(runs);
        if (!newest)
            throw vantaro_io::exception_io_not_found("There is no run that can be undone");
        return *newest;
    }
    const auto found = std::ranges::find(runs, number, &core::RunSummary::number);
    if (found != runs.end())
        return *found;
    core::RunSummary unknown;
    unknown.number = number;
    return unknown;
}

void tell_which(Session& session, const core::RunSummary& run, bool json) {
    if (run.start.time == 0)
        return;
    const std::string line = "Undoing run " + std::to_string(run.number) + " of " + local_time(run.start.time)
                             + ": " + core::printable(run.start.activity);
    if (json)
        session.terminal.hint(line);
    else
        print_line(line);
}

bool has_later_run(const core::RunStore& store, std::uint64_t number) {
    const auto run = core::newest_run_to_undo(store.runs());
    return run && run->number > number;
}

} // namespace

int undo(Session& session, std::uint64_t number, bool times, bool json) {
    core::RunStore& store = session.host.runs();
    const core::RunSummary which = run_to_undo(store, number);
    number = which.number;
    tell_which(session, which, json);
    PrintUndo observer(session.terminal, json);
    const auto report_line = [&](const std::string& line) { session.terminal.line(line); };
    const core::UndoReport report = core::undo_run(store, number, {times, core::present(), report_line},
                                                   observer, session.host.interrupt());
    observer.end();
    if (!json)
        print_line("Run " + std::to_string(number) + ": " + std::to_string(report.total)
                   + (report.total == 1 ? " file: " : " files: ") + std::to_string(report.put_back)
                   + " put back, " + std::to_string(report.failed) + " failed");
    if (report.failed > 0 && has_later_run(store, number))
        session.terminal.line(
            "Files that later runs have changed can be put back when those are undone first.");
    if (!report.problem.empty())
        session.terminal.line(report.problem);
    hint_at_undo(session.terminal, report.run);
    if (report.aborted) {
        session.terminal.line("Interrupted: the other files were not touched.");
        return core::exit_status::interrupted;
    }
    return report.failed > 0 || !report.problem.empty() ? core::exit_status::some_failed
                                                        : core::exit_status::done;
}

} // namespace quorvex::command
