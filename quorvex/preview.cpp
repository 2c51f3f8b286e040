// What a script would make of every track, without touching a file.

#include "quorvex/output.h"
#include "quorvex/script_source.h"
#include "quorvex/tracks.h"

#include "engine/change_text.h"
#include "engine/dry_run.h"
#include "engine/run.h"
#include "host/api/exceptions.h"
#include "vantaro/application/exit_status.h"
#include "vantaro/common/file_identity.h"

#include <map>
#include <string>
#include <utility>

namespace quorvex::command {

using namespace vantaro;

namespace {

/// Remembers why tracks could not be read.
class RememberFailures final : public core::UpdateLines {
public:
    RememberFailures(core::Terminal& terminal, bool json, std::map<const TrackHandle*, std::string>& failures)
        : UpdateLines(terminal, "Reading", failures_told(json)), failures_(failures) {}

    void on_track(const core::TrackOutcome& outcome, std::size_t done, std::size_t total) override {
        UpdateLines::on_track(outcome, done, total);
        if (outcome.state == core::TrackOutcome::State::failed)
            failures_.emplace(outcome.track, outcome.error);
    }

private:
    std::map<const TrackHandle*, std::string>& failures_;
};

struct PreviewedTrack {
    TrackInfoRecord before;
    TrackInfoRecord after;
    std::string changes;
    std::string error;
};

PreviewedTrack preview_track(DryRun& dry_run, const Script& script, std::size_t row) {
    PreviewedTrack track;
    if (const Ref<core::HeldInfo> held = static_cast<core::Track&>(*dry_run.tracks()[row]).held())
        track.before.copy(held->info());
    track.after.copy(track.before);
    try {
        track.after = dry_run.outcome(script, row, track.before);
        track.changes = preview_text(track.before, track.after);
    } catch (const std::exception& error) {
        track.error = error.what();
        track.changes = preview_text(error);
    }
    return track;
}

/// Tells which tracks lead to the same file: a run edits the first of them, and the others become what it
/// becomes.
class FirstRows {
public:
    explicit FirstRows(const TrackList& tracks) : tracks_(tracks) {}

    /// The row that is edited for this one. A track that is listed twice is previewed by each of its rows.
    std::size_t edited_row(std::size_t row) {
        try {
            const core::FileIdentity file = core::FileIdentity::of(tracks_[row]->path());
            const std::size_t first = rows_.try_emplace({file.device, file.inode}, row).first->second;
            return tracks_[first].get() == tracks_[row].get() ? row : first;
        } catch (const vantaro_io::exception_io&) {
            return row;
        }
    }

private:
    const TrackList& tracks_;
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::size_t> rows_; // by device and inode
};

void print(const TrackHandle& handle, const PreviewedTrack& track, bool json) {
    if (!json) {
        print_line(core::printable(handle.path()) + ": " + core::printable(track.changes));
        return;
    }
    Json object = track_object(handle);
    object["before"] = fields_object(track.before);
    if (track.error.empty()) {
        object["after"] = fields_object(track.after);
        object["changes"] = track.changes;
    } else {
        object["error"] = track.error;
    }
    print_json(object);
}

void print_unreadable(const TrackHandle& handle, const std::string& error) {
    Json object = track_object(handle);
    object["error"] = error;
    print_json(object);
}

} // namespace

int preview(Session& session, const RunOptions& options) {
    const StoredScript stored = load_named_script(session, options.script);
    const TrackList tracks = resolve_paths(session, options.paths);
    if (tracks.empty())
        return status_of(session, tracks);
    const std::optional<Script> script = load_script_or_ask(stored, nullptr);
    if (!script)
        return core::exit_status::not_begun;

    std::map<const TrackHandle*, std::string> failures;
    session.host.tag_io().read_tags_of(
        own_tracks(tracks), core::TagIO::Hold::yes,
        std::make_unique<RememberFailures>(session.terminal, options.json, failures));
    session.host.wait_until_idle();

    DryRun dry_run(tracks);
    FirstRows first_rows(tracks);
    bool failed = false;
    for (std::size_t row = 0; row < tracks.size() && !session.host.interrupt().is_aborting(); ++row) {
        if (const auto failure = failures.find(tracks[row].get()); failure != failures.end()) {
            if (options.json)
                print_unreadable(*tracks[row], failure->second);
            continue;
        }
        const PreviewedTrack track = preview_track(dry_run, *script, first_rows.edited_row(row));
        failed |= !track.error.empty();
        if (!options.only_changed || !track.error.empty() || track.changes != no_changes)
            print(*tracks[row], track, options.json);
    }
    const int status = status_of(session, tracks);
    return status == core::exit_status::done && failed ? core::exit_status::some_failed : status;
}

} // namespace quorvex::command
