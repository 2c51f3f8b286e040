// Taking back the newest run from the window.
//
//     if (const auto run = newest_run_to_undo(host.runs().runs())) undo.start(*run, &window, on_end);
//
// Main thread.
#pragma once

#include "vantaro/desktop/background_work.h"
#include "vantaro/journal/undo.h"

#include <QPointer>
#include <QProgressDialog>

#include <functional>
#include <string>
#include <vector>

namespace vantaro::core {

class RunUndo {
public:
    struct Outcome {
        UndoReport report;
        std::vector<std::string> put_back;
        /// A line for each file that was not put back.
        std::vector<std::string> failures;
        /// Why the undo could not be begun; empty when it was.
        std::string error;
    };

    /// `store` outlives the object.
    explicit RunUndo(RunStore& store) : store_(store), work_([](const std::string&) {}) {}

    /// Takes the run back on a thread of its own. `parent` is covered by its progress, with Cancel, when it
    /// takes longer than a moment. Requires: !is_running().
    void start(const RunSummary& run, QWidget* parent, std::function<void(const Outcome&)> on_end);
    bool is_running() const { return work_.is_running(); }
    /// Ends it between two files.
    void cancel() { work_.cancel(); }

private:
    RunStore& store_;
    QPointer<QProgressDialog> progress_;
    BackgroundWork work_;
};

} // namespace vantaro::core
