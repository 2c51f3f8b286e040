#include "quorvex/output.h"
#include "quorvex/script_source.h"
#include "quorvex/tracks.h"

#include "engine/change_text.h"
#include "engine/run.h"
#include "host/shared/text.h"
#include "vantaro/application/exit_status.h"
#include "vantaro/terminal/standard_output.h"
#include "vantaro/terminal/tag_version_lines.h"

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
    PrintRun(core::Terminal& terminal, bool json)
        : UpdateLines(terminal, "Updating", failures_told(json)), json_(json) {}

    void on_track(const core::TrackOutcome& outcome, std::size_t done, std::size_t total) override {
        UpdateLines::on_track(outcome, done, total);
        if (!json_) {
            versions_.add(outcome);
            return;
        }
        Json object = track_object(*outcome.track);
        const bool has_failed = outcome.state == core::TrackOutcome::State::failed;
        if (!has_failed || was_read(outcome))
            object["before"] = fields_object(outcome.before);
        if (has_failed) {
            object["error"] = outcome.error; // what was made of it was thrown away
        } else {
            object["after"] = fields_object(outcome.after);
            object["changes"] = preview_text(outcome.before, outcome.after);
        }
        if (outcome.tag_version)
            object["tag_version"] = {{"before", outcome.tag_version->before},
                                     {"after", outcome.tag_version->after}};
        print_json(object);
    }
    void on_end(const core::UpdateReport& report) override {
        UpdateLines::on_end(report);
        if (!json_) {
            core::print_output(versions_.text());
            print_summary(report);
        }
        hint_at_undo(terminal(), report.run);
    }

private:
    static bool was_read(const core::TrackOutcome& outcome) {
        return !outcome.before.fields().empty() || !outcome.before.technical_fields().empty();
    }

    const bool json_;
    core::TagVersionLines versions_;
};

/// Reads the tags that groups are made from. Returns false when that was interrupted: groups of some of the
/// tags would be others.
bool read_for_groups(Session& session, const TrackList& tracks) {
    session.host.tag_io().read_tags_of(own_tracks(tracks), core::TagIO::Hold::yes,
                                       std::make_unique<core::UpdateProgress>(session.terminal, "Reading"));
    session.host.wait_until_idle();
    if (!session.host.interrupt().is_aborting())
        return true;
    session.terminal.line("Interrupted: none of " + std::to_string(tracks.size()) + " tracks was touched.");
    return false;
}

} // namespace

int run(Session& session, const RunOptions& options) {
    const StoredScript stored = load_named_script(session, options.script);
    const TrackList tracks = resolve_paths(session, options.paths);
    if (tracks.empty())
        return status_of(session, tracks);
    const std::optional<Script> script = load_script_or_ask(stored, nullptr);
    if (!script)
        return core::exit_status::not_begun;
    if (std::ranges::any_of(*script, [](const Ref<Action>& action) { return action->uses_group_key(); })
        && !read_for_groups(session, tracks))
        return core::exit_status::interrupted;
    session.host.tag_io().set_activity(
        "run " + (has_lasting_name(options.script) ? options.script : description_of(*script)));
    session.next_watcher = std::make_unique<PrintRun>(session.terminal, options.json);
    run_script(*script, tracks, nullptr, nullptr);
    session.host.wait_until_idle();
    return status_of(session, tracks);
}

} // namespace quorvex::command
