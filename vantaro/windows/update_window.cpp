#include "vantaro/windows/update_window.h"

#include "vantaro/windows/shown_text.h"
#include "vantaro/windows/update_report_window.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace vantaro::core {

namespace {

// In milliseconds.
constexpr qint64 unseen_time = 400;
constexpr int look_interval = 50;
constexpr qint64 time_before_a_guess = 2000;

/// What the job's threads leave for the window to look at: they never wait for it, and cause no events.
class Progress {
public:
    struct Seen {
        std::size_t done = 0;
        std::size_t total = 0;
        const Track* last = nullptr;
    };

    explicit Progress(std::size_t total) { seen_.total = total; }

    void add(const TrackOutcome& outcome, std::size_t done, std::size_t total) {
        const std::lock_guard lock(mutex_);
        seen_ = {done, total, outcome.track};
        if (outcome.state == TrackOutcome::State::failed)
            failed_.push_back({outcome.track->path(), outcome.error});
    }
    Seen seen() const {
        const std::lock_guard lock(mutex_);
        return seen_;
    }
    std::vector<FailedFile> take_failed() {
        const std::lock_guard lock(mutex_);
        return std::move(failed_);
    }

private:
    mutable std::mutex mutex_; // guards the rest
    Seen seen_;
    std::vector<FailedFile> failed_;
};

QString count_text(std::size_t n) {
    return QLocale().toString(static_cast<qulonglong>(n));
}

QString remaining_text(qint64 milliseconds) {
    const qint64 seconds = (milliseconds + 999) / 1000;
    if (seconds < 60)
        return QString("about %1 s left").arg(seconds);
    if (seconds < 3600)
        return QString("about %1 min left").arg((seconds + 59) / 60);
    return QString("about %1 h %2 min left").arg(seconds / 3600).arg(seconds % 3600 / 60);
}

class UpdateWindow final : public QDialog {
public:
    UpdateWindow(std::shared_ptr<Progress> progress, QWidget* parent, const QString& what);

    /// What Cancel sets.
    void set_abort(std::shared_ptr<AbortSignal> abort) { abort_ = std::move(abort); }

    /// The update has ended.
    void finish();
    /// Escape and the close box: as Cancel the first time, then the window is put away.
    void reject() override;

private:
    void look();
    void appear();
    void cancel();
    QString guess(const Progress::Seen& seen);

    const std::shared_ptr<Progress> progress_;
    std::shared_ptr<AbortSignal> abort_; // nullptr when there is nothing to cancel any more
    QLabel* what_;
    QLabel* file_;
    QProgressBar* bar_;
    QLabel* count_;
    QLabel* remaining_;
    QPushButton* cancel_;
    QTimer timer_;
    QElapsedTimer since_start_;
    /// From the first track that was seen done: the update may have waited for another one before.
    QElapsedTimer since_first_;
    std::size_t done_at_first_ = 0;
    bool was_shown_ = false;
};

UpdateWindow::UpdateWindow(std::shared_ptr<Progress> progress, QWidget* parent, const QString& what)
    : QDialog(parent), progress_(std::move(progress)), what_(new QLabel(what, this)), file_(new QLabel(this)),
      bar_(new QProgressBar(this)), count_(new QLabel(this)), remaining_(new QLabel(this)) {
    setWindowTitle(what);
    for (QLabel* label : {what_, file_})
        label->setTextFormat(Qt::PlainText);
    what_->setWordWrap(true);
    // The name is cut to the width that there is, and does not ask for more.
    file_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    bar_->setTextVisible(false);
    bar_->setAccessibleName("Progress");
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    cancel_ = buttons->button(QDialogButtonBox::Cancel);
    connect(cancel_, &QPushButton::clicked, this, [this] { cancel(); });

    auto* counts = new QHBoxLayout;
    counts->addWidget(count_);
    counts->addStretch();
    counts->addWidget(remaining_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(what_);
    layout->addWidget(file_);
    layout->addWidget(bar_);
    layout->addLayout(counts);
    layout->addStretch();
    layout->addWidget(buttons);
    setMinimumWidth(60 * fontMetrics().averageCharWidth());

    connect(&timer_, &QTimer::timeout, this, [this] { look(); });
    timer_.start(look_interval);
    since_start_.start();
}

void UpdateWindow::look() {
    const Progress::Seen seen = progress_->seen();
    if (seen.last && !since_first_.isValid()) {
        since_first_.start();
        done_at_first_ = seen.done;
    }
    if (!was_shown_ && since_start_.elapsed() >= unseen_time) {
        was_shown_ = true;
        appear();
    }
    if (!isVisible())
        return;
    constexpr int steps = 1000;
    bar_->setRange(0, steps);
    bar_->setValue(seen.total == 0 ? 0 : static_cast<int>(steps * seen.done / seen.total));
    count_->setText(count_text(seen.done) + " of " + count_text(seen.total));
    remaining_->setText(guess(seen));
    if (seen.last) {
        const std::string path = seen.last->path();
        const QString name = shown_text(path.substr(path.rfind('/') + 1));
        file_->setText(file_->fontMetrics().elidedText(name, Qt::ElideMiddle, file_->width()));
    }
}

/// Whoever is typing goes on typing where they are. Nobody is where the window waits for the end.
void UpdateWindow::appear() {
    const QWidget* parent = parentWidget();
    const bool takes_over = parent && !parent->isEnabled() && parent->isActiveWindow();
    setAttribute(Qt::WA_ShowWithoutActivating, !takes_over);
    show();
    if (takes_over)
        activateWindow();
}

QString UpdateWindow::guess(const Progress::Seen& seen) {
    if (!abort_ || !since_first_.isValid() || since_first_.elapsed() < time_before_a_guess
        || seen.done <= done_at_first_ || seen.done >= seen.total)
        return {};
    const double each =
        static_cast<double>(since_first_.elapsed()) / static_cast<double>(seen.done - done_at_first_);
    return remaining_text(static_cast<qint64>(each * static_cast<double>(seen.total - seen.done)));
}

void UpdateWindow::cancel() {
    if (!abort_)
        return;
    abort_->set();
    abort_ = nullptr;
    cancel_->setEnabled(false);
    what_->setText("Cancelled: finishing the files that were begun…");
    remaining_->clear();
}

void UpdateWindow::reject() {
    if (abort_)
        cancel();
    else
        QDialog::reject();
}

void UpdateWindow::finish() {
    timer_.stop();
    abort_ = nullptr;
    const bool was_active = isActiveWindow();
    hide();
    if (was_active && parentWidget())
        parentWidget()->activateWindow();
    deleteLater();
}

class WindowWatcher final : public UpdateWatcher {
public:
    WindowWatcher(QWidget* parent, std::size_t total, const UpdateTexts& texts)
        : progress_(std::make_shared<Progress>(total)), parent_(parent), done_(texts.done),
          window_(new UpdateWindow(progress_, parent, texts.doing)) {}
    ~WindowWatcher() override { put_window_away(); }
    WindowWatcher(const WindowWatcher&) = delete;
    WindowWatcher& operator=(const WindowWatcher&) = delete;

    void on_queued(const std::shared_ptr<AbortSignal>& abort) override { window_->set_abort(abort); }
    void on_track(const TrackOutcome& outcome, std::size_t done, std::size_t total) override {
        progress_->add(outcome, done, total);
    }
    void on_end(const UpdateReport& report) override {
        put_window_away();
        std::vector<FailedFile> failed = progress_->take_failed();
        if (failed.empty() && report.problem.empty())
            return;
        // Before a window that is hidden it might never be seen.
        show_update_report(report, done_, std::move(failed),
                           parent_ && parent_->isVisible() ? parent_ : nullptr);
    }

private:
    void put_window_away() {
        if (window_)
            window_->finish();
        window_.clear();
    }

    const std::shared_ptr<Progress> progress_; // the window's too: it may stay a little longer
    const QPointer<QWidget> parent_;
    const std::string done_;
    QPointer<UpdateWindow> window_; // without a parent nobody's: it is put away here
};

} // namespace

std::unique_ptr<UpdateWatcher> make_update_window(QWidget* parent, std::size_t total,
                                                  const UpdateTexts& texts) {
    return std::make_unique<WindowWatcher>(parent, total, texts);
}

} // namespace vantaro::core
