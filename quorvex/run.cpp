#include "quorvex/output.h"
#include "quorvex/script_source.h"
#include "quorvex/tracks.h"

#include "engine/change_text.h"
#include "engine/run.h"
#include "vantaro/application/exit_status.h"

#include <algorithm>
#include <optional>

namespace quorvex::command {

using namespace vantaro;

namespace {

void print_summary(const core::UpdateReport& report) {
    print_line(core::summary_line(report));
}

class PrintRun final : public core::UpdateLines {
public:
    PrintRun(core::Terminal& terminal, bool json) : UpdateLines(terminal, "Updating"), json_(json) {}

    void on_track(const core::TrackOutcome& outcome, std::size_t done, std::size_t total) override {
        UpdateLines::on_track(outcome, done, total);
        if (!json_)
            return;
        Json object{{"path", outcome.track->path()},
                    {"subsong", outcome.track->subsong()},
                    {"before", fields_object(outcome.before)},
                    {"after", fields_object(outcome.after)},
                    {"changes", describe_changes(outcome.before, outcome.after)}};
        if (outcome.state == core::TrackOutcome::State::failed)
            object["error"] = outcome.error;
        print_json(object);
    }
    void on_end(const core::UpdateReport& report) override {
        UpdateLines::on_end(report);
        if (!json_)
            print_summary(report);
        hint_at_undo(terminal(), report.run);
    }

private:
    const bool json_;
};

} // namespace

int run(Session& session, const RunOptions& options) {
    const StoredScript stored = load_named_script(options.script);
    const TrackList tracks = resolve_paths(session, options.paths);
    if (tracks.empty()) {
        if (!options.json)
            print_summary({});
        return status_of(session);
    }
    const std::optional<Script> script = load_script_or_ask(stored, nullptr);
    if (!script)
        return core::exit_status::not_begun;
    // Groups are made from the tags that the host holds.
    if (std::ranges::any_of(*script, [](const Ref<Action>& action) { return action->uses_group_key(); })) {
        session.host.tag_io().read_tags_of(
            own_tracks(tracks), core::TagIO::Hold::yes,
            std::make_unique<core::UpdateProgress>(session.terminal, "Reading"));
        session.host.wait_until_idle();
    }
    session.host.tag_io().set_activity("run " + options.script);
    session.next_watcher = std::make_unique<PrintRun>(session.terminal, options.json);
    run_script(*script, tracks, nullptr, nullptr);
    session.host.wait_until_idle();
    return status_of(session);
}

} // namespace quorvex::command
