#include "vantaro/desktop/run_undo.h"

#include "vantaro/common/present.h"

namespace vantaro::core {

namespace {

/// Calls of the main thread for every file would keep it busy with nothing else.
constexpr std::size_t files_a_step = 20;

class CollectOutcome final : public UndoObserver {
public:
    CollectOutcome(RunUndo::Outcome& outcome, std::function<void(std::size_t done)> show)
        : outcome_(outcome), show_(std::move(show)) {}

    void on_file(const std::string& path, const std::string& error, std::size_t done, std::size_t) override {
        if (error.empty())
            outcome_.put_back.push_back(path);
        else
            outcome_.failures.push_back(path + ": " + error);
        if (done % files_a_step == 0)
            show_(done);
    }

private:
    RunUndo::Outcome& outcome_;
    const std::function<void(std::size_t)> show_;
};

} // namespace

void RunUndo::start(const RunSummary& run, QWidget* parent, std::function<void(const Outcome&)> on_end) {
    const auto total = static_cast<int>(run.files);
    progress_ = new QProgressDialog(QStringLiteral("Putting files back…"), QStringLiteral("Cancel"), 0, total,
                                    parent);
    progress_->setWindowModality(Qt::WindowModal);
    progress_->setMinimumWidth(progress_->fontMetrics().averageCharWidth() * 60);
    progress_->setAutoReset(false);
    progress_->setAutoClose(false);
    progress_->setValue(0);
    QObject::connect(progress_, &QProgressDialog::canceled, progress_, [this] { cancel(); });
    work_.start([this, number = run.number, on_end = std::move(on_end)](const AbortFlag& abort) {
        Outcome outcome;
        CollectOutcome observer(outcome, [this](std::size_t done) {
            work_.post([this, done] {
                if (progress_ && !progress_->wasCanceled())
                    progress_->setValue(static_cast<int>(done));
            });
        });
        try {
            outcome.report = undo_run(store_, number, {false, present()}, observer, abort);
        } catch (const std::exception& error) {
            outcome.error = error.what();
        }
        return [this, outcome = std::move(outcome), on_end] {
            delete progress_;
            on_end(outcome);
        };
    });
}

} // namespace vantaro::core
