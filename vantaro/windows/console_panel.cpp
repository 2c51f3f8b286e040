#include "vantaro/windows/console_panel.h"

#include "vantaro/windows/shown_text.h"

#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPointer>
#include <QScrollBar>
#include <QStringList>
#include <QTextBlock>
#include <QTimer>

#include <algorithm>
#include <deque>
#include <functional>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

namespace vantaro::core {

namespace {

/// How long lines are collected before they are shown, in milliseconds.
constexpr int collecting_time = 40;

class Panel final : public QPlainTextEdit {
public:
    explicit Panel(QWidget* parent) : QPlainTextEdit(parent) {
        setAccessibleName("Console");
        setReadOnly(true);
        setUndoRedoEnabled(false);
        setFrameShape(QFrame::NoFrame);
        setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        setMaximumBlockCount(static_cast<int>(PanelConsole::most_lines));
        connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, [this] {
            follows_ = verticalScrollBar()->sliderPosition() == verticalScrollBar()->maximum();
        });
    }

    /// Whoever has scrolled up goes on seeing the same lines.
    void append(const QStringList& lines) {
        if (lines.isEmpty())
            return;
        QScrollBar& bar = *verticalScrollBar();
        const QTextBlock first_seen = firstVisibleBlock();
        const int line_in_block = bar.value() - first_seen.firstLineNumber();
        const int seen_number = first_seen.blockNumber();
        const int before = document()->isEmpty() ? 0 : blockCount();
        appendPlainText(lines.join('\n'));
        if (follows_)
            return follow();
        const int removed = before + static_cast<int>(lines.size()) - blockCount();
        const QTextBlock now = document()->findBlockByNumber(std::max(seen_number - removed, 0));
        bar.setValue(now.firstLineNumber() + line_in_block);
    }

    std::function<void()> on_clear;

protected:
    void wheelEvent(QWheelEvent* event) override {
        QPlainTextEdit::wheelEvent(event);
        note_place();
    }
    void keyPressEvent(QKeyEvent* event) override {
        QPlainTextEdit::keyPressEvent(event);
        note_place();
    }
    void showEvent(QShowEvent* event) override {
        QPlainTextEdit::showEvent(event);
        follow();
    }
    void resizeEvent(QResizeEvent* event) override {
        QPlainTextEdit::resizeEvent(event);
        follow();
    }
    void contextMenuEvent(QContextMenuEvent* event) override {
        const std::unique_ptr<QMenu> menu(createStandardContextMenu(event->pos()));
        menu->addSeparator();
        QAction* clear_action = menu->addAction("C&lear");
        clear_action->setEnabled(!document()->isEmpty());
        const QPointer<Panel> guard(this);
        if (menu->exec(event->globalPos()) == clear_action && guard)
            on_clear();
    }

private:
    void note_place() { follows_ = verticalScrollBar()->value() == verticalScrollBar()->maximum(); }
    void follow() {
        if (follows_)
            verticalScrollBar()->setValue(verticalScrollBar()->maximum());
    }

    /// Until the person scrolls up, and again when they are back at the end.
    bool follows_ = true;
};

} // namespace

/// What the console and its panels share.
class PanelConsole::Lines {
public:
    Lines() {
        timer_.setSingleShot(true);
        QObject::connect(&timer_, &QTimer::timeout, [this] { show_new(); });
    }

    void add(QString line) {
        const std::lock_guard lock(mutex_);
        new_.push_back(std::move(line));
        if (new_.size() > most_lines)
            new_.pop_front();
        // Many lines are one message to the main thread. It goes unheard when the timer has gone.
        if (!std::exchange(is_announced_, true))
            QMetaObject::invokeMethod(
                &timer_, [this] { timer_.start(collecting_time); }, Qt::QueuedConnection);
    }

    void show_new() {
        QStringList lines;
        {
            const std::lock_guard lock(mutex_);
            is_announced_ = false;
            lines = QStringList(new_.begin(), new_.end());
            new_.clear();
        }
        std::ranges::copy(lines, std::back_inserter(shown_));
        if (shown_.size() > most_lines)
            shown_.erase(shown_.begin(), shown_.end() - static_cast<std::ptrdiff_t>(most_lines));
        std::erase_if(panels_, [](const auto& panel) { return panel.isNull(); });
        for (const auto& panel : panels_)
            panel->append(lines);
    }

    void add_panel(Panel* panel) {
        panel->append(QStringList(shown_.begin(), shown_.end()));
        panels_.emplace_back(panel);
    }

    QStringList shown() const { return {shown_.begin(), shown_.end()}; }

    void clear() {
        show_new();
        shown_.clear();
        for (const auto& panel : panels_)
            panel->clear();
    }

private:
    QTimer timer_;
    std::mutex mutex_; // guards new_ and is_announced_
    std::deque<QString> new_;
    bool is_announced_ = false;
    // The rest is the main thread's.
    std::deque<QString> shown_;
    std::vector<QPointer<Panel>> panels_;
};

PanelConsole::PanelConsole(Terminal* terminal) : terminal_(terminal), lines_(std::make_unique<Lines>()) {}

PanelConsole::~PanelConsole() = default;

void PanelConsole::print(const char* text, std::size_t length) {
    if (terminal_)
        terminal_->line({text, length});
    lines_->add(shown_text({text, length}));
}

void PanelConsole::note(std::string_view line) {
    lines_->add(shown_text(line));
}

QStringList PanelConsole::lines() const {
    lines_->show_new();
    return lines_->shown();
}

QWidget* PanelConsole::make_panel(QWidget* parent) {
    auto* panel = new Panel(parent);
    // A panel may be there longer than the console.
    panel->on_clear = [panel, lines = std::weak_ptr(lines_)] {
        if (const auto all = lines.lock())
            all->clear();
        else
            panel->clear();
    };
    lines_->show_new();
    lines_->add_panel(panel);
    return panel;
}

} // namespace vantaro::core
