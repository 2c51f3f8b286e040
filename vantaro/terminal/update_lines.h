// An update as a terminal shows it: a progress line, and what failed.
//
//     setup.make_watcher = [&](std::size_t, WindowHandle) { return std::make_unique<UpdateLines>(terminal,
//     "Updating"); };
#pragma once

#include "vantaro/terminal/failure_lines.h"
#include "vantaro/terminal/tag_version_lines.h"
#include "vantaro/update/tag_io.h"

#include <string>

namespace vantaro::core {

/// Only the progress line.
class UpdateProgress : public UpdateWatcher {
public:
    /// `doing` says what is done to the tracks, for the progress line ("Updating"). It outlives the object.
    UpdateProgress(Terminal& terminal, const char* doing) : terminal_(terminal), doing_(doing) {}

    void on_track(const TrackOutcome& outcome, std::size_t done, std::size_t total) override;
    void on_end(const UpdateReport& report) override;

protected:
    Terminal& terminal() { return terminal_; }

private:
    Terminal& terminal_;
    const char* doing_;
};

/// Also a line for every track that failed, and how many there were; but what kept all of them from being
/// begun is left to whoever reports the update's problem.
class UpdateLines : public UpdateProgress {
public:
    UpdateLines(Terminal& terminal, const char* doing,
                FailureLines::Told told = FailureLines::Told::summed_up)
        : UpdateProgress(terminal, doing), failures_(terminal, told) {}

    void on_track(const TrackOutcome& outcome, std::size_t done, std::size_t total) override;
    void on_end(const UpdateReport& report) override;

private:
    FailureLines failures_;
};

/// "3 tracks: 2 written, 1 unchanged, 0 failed"
std::string summary_line(const UpdateReport& report);

/// Also the tags of another version, and the summary line, on standard output.
class UpdateLinesAndSummary final : public UpdateLines {
public:
    using UpdateLines::UpdateLines;
    void on_track(const TrackOutcome& outcome, std::size_t done, std::size_t total) override;
    void on_end(const UpdateReport& report) override;

private:
    TagVersionLines versions_;
};

} // namespace vantaro::core
