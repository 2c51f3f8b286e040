#include "vantaro/terminal/update_lines.h"

#include "vantaro/terminal/standard_output.h"

namespace vantaro::core {

void UpdateProgress::on_track(const TrackOutcome&, std::size_t done, std::size_t total) {
    terminal_.progress(doing_, done, total);
}

void UpdateProgress::on_end(const UpdateReport&) {
    terminal_.end_progress();
}

void UpdateLines::on_track(const TrackOutcome& outcome, std::size_t done, std::size_t total) {
    if (outcome.state == TrackOutcome::State::failed && !outcome.is_not_begun)
        failures_.add(outcome.track->path(), outcome.error);
    UpdateProgress::on_track(outcome, done, total);
}

void UpdateLines::on_end(const UpdateReport& report) {
    UpdateProgress::on_end(report);
    failures_.end();
    const std::size_t done = report.written + report.unchanged + report.failed;
    if (report.aborted)
        terminal().line("Interrupted: " + std::to_string(done) + " of " + std::to_string(report.total)
                        + " tracks are done, the others were not touched.");
    if (report.failed > 0)
        terminal().line(std::to_string(report.failed) + " of " + std::to_string(report.total)
                        + " tracks failed.");
}

std::string summary_line(const UpdateReport& report) {
    return std::to_string(report.total) + (report.total == 1 ? " track: " : " tracks: ")
           + std::to_string(report.written) + " written, " + std::to_string(report.unchanged) + " unchanged, "
           + std::to_string(report.failed) + " failed";
}

void UpdateLinesAndSummary::on_track(const TrackOutcome& outcome, std::size_t done, std::size_t total) {
    versions_.add(outcome);
    UpdateLines::on_track(outcome, done, total);
}

void UpdateLinesAndSummary::on_end(const UpdateReport& report) {
    UpdateLines::on_end(report);
    print_output(versions_.text());
    print_output(summary_line(report) + '\n');
}

} // namespace vantaro::core
