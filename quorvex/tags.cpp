#include "quorvex/output.h"
#include "quorvex/tracks.h"

#include <algorithm>

namespace quorvex::command {

using namespace vantaro;

namespace {

void print_fields(const core::TrackOutcome& outcome) {
    print_line(core::printable(outcome.track->path()));
    std::size_t width = 0;
    for (const TrackField& field : outcome.before.fields())
        width = std::max(width, field.name.size());
    for (const TrackField& field : outcome.before.fields()) {
        std::string label = core::printable(field.name);
        label.resize(width, ' ');
        for (const std::string& value : field.values) {
            std::string_view rest = value;
            // Values of several lines keep their lines, below one another.
            while (true) {
                const std::size_t end = rest.find('\n');
                std::string_view line = rest.substr(0, end);
                if (line.ends_with('\r'))
                    line.remove_suffix(1);
                print_line("    " + label + " : " + core::printable(line));
                label.assign(width, ' ');
                if (end == std::string_view::npos)
                    break;
                rest.remove_prefix(end + 1);
            }
        }
    }
    print_line("");
}

class PrintTags final : public core::UpdateLines {
public:
    PrintTags(core::Terminal& terminal, bool json)
        : UpdateLines(terminal, "Reading", failures_told(json)), json_(json) {}

    void on_track(const core::TrackOutcome& outcome, std::size_t done, std::size_t total) override {
        UpdateLines::on_track(outcome, done, total);
        const bool failed = outcome.state == core::TrackOutcome::State::failed;
        if (json_) {
            Json object = track_object(*outcome.track);
            if (failed) {
                object["error"] = outcome.error;
            } else {
                object["fields"] = fields_object(outcome.before);
                object["technical"] = technical_object(outcome.before);
            }
            print_json(object);
        } else if (!failed) {
            print_fields(outcome);
        }
    }

private:
    const bool json_;
};

} // namespace

int tags(Session& session, const PathOptions& paths, bool json) {
    const TrackList tracks = resolve_paths(session, paths);
    session.host.tag_io().read_tags_of(own_tracks(tracks), core::TagIO::Hold::no,
                                       std::make_unique<PrintTags>(session.terminal, json));
    session.host.wait_until_idle();
    return status_of(session, tracks);
}

} // namespace quorvex::command
