// Title-formatting patterns on the terminal: one line a track.

#include "quorvex/output.h"
#include "quorvex/tracks.h"

#include "vantaro/application/exit_status.h"
#include "vantaro/titleformat/title_format.h"

#include <variant>

namespace quorvex::command {

using namespace vantaro;

namespace {

class PrintFormatted final : public core::UpdateLines {
public:
    PrintFormatted(core::Terminal& terminal, Ref<core::TitleFormatProgram> program)
        : UpdateLines(terminal, "Reading"), program_(std::move(program)) {}

    void on_track(const core::TrackOutcome& outcome, std::size_t done, std::size_t total) override {
        UpdateLines::on_track(outcome, done, total);
        if (outcome.state == core::TrackOutcome::State::failed)
            return;
        StringSink text;
        program_->run(*outcome.track, outcome.before, nullptr, text, nullptr);
        print_line(core::printable(text.text()));
    }

private:
    const Ref<core::TitleFormatProgram> program_;
};

} // namespace

int format(Session& session, const std::string& pattern, const PathOptions& paths) {
    auto compiled = core::compile_title_format(pattern);
    if (const auto* error = std::get_if<core::TitleFormatError>(&compiled)) {
        session.terminal.line("The pattern does not compile: position " + std::to_string(error->position)
                              + ": " + error->text);
        return core::exit_status::not_begun;
    }
    const TrackList tracks = resolve_paths(session, paths);
    session.host.tag_io().read_tags_of(
        own_tracks(tracks), core::TagIO::Hold::yes,
        std::make_unique<PrintFormatted>(session.terminal,
                                         std::get<Ref<core::TitleFormatProgram>>(std::move(compiled))));
    session.host.wait_until_idle();
    return status_of(session, tracks);
}

} // namespace quorvex::command
