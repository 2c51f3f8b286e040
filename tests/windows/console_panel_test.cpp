// The console panel: lines from threads, its limit, and who has scrolled up.

#include "tests/windows/window_access.h"
#include "vantaro/windows/console_panel.h"

#include <QMenu>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>

#include <memory>
#include <thread>
#include <vector>

namespace vantaro::core {
namespace {

class ConsolePanel : public testing::Test {
protected:
    std::unique_ptr<QPlainTextEdit> make_panel() {
        std::unique_ptr<QPlainTextEdit> panel(dynamic_cast<QPlainTextEdit*>(console->make_panel(nullptr)));
        panel->resize(400, 200);
        panel->show();
        return panel;
    }
    void print(const std::string& line) { console->print(line.data(), line.size()); }
    void print_numbers(int from, int to) {
        for (int i = from; i < to; ++i)
            print("line " + std::to_string(i));
    }
    static bool waits_for_last_line(const QPlainTextEdit& panel, const QString& line) {
        return QTest::qWaitFor([&] { return panel.toPlainText().endsWith(line); });
    }

    std::unique_ptr<PanelConsole> console = std::make_unique<PanelConsole>(nullptr);
};

TEST_F(ConsolePanel, ShowsLinesBeforeAndAfterIt) {
    print("before");
    const auto panel = make_panel();
    EXPECT_EQ(panel->toPlainText(), "before");
    print("a\nb\xFF");
    print("");
    print("end");
    ASSERT_TRUE(waits_for_last_line(*panel, "end"));
    EXPECT_EQ(panel->toPlainText(), QString::fromUtf8("before\na_b\xEF\xBF\xBD\n\nend"));
    EXPECT_TRUE(panel->isReadOnly());
}

TEST_F(ConsolePanel, TakesLinesFromThreadsInTheirOrder) {
    const auto panel = make_panel();
    constexpr int threads = 4;
    constexpr int each = 2000;
    std::vector<std::jthread> printing;
    printing.reserve(threads);
    for (int thread = 0; thread < threads; ++thread)
        printing.emplace_back([&, thread] {
            for (int i = 0; i < each; ++i)
                print(std::to_string(thread) + ' ' + std::to_string(i));
        });
    ASSERT_TRUE(QTest::qWaitFor([&] { return panel->blockCount() == threads * each; }));
    std::vector<int> next(threads);
    for (const QString& line : panel->toPlainText().split('\n')) {
        const int thread = line.section(' ', 0, 0).toInt();
        EXPECT_EQ(line.section(' ', 1).toInt(), next[static_cast<std::size_t>(thread)]++);
    }
}

TEST_F(ConsolePanel, KeepsTheNewestLines) {
    const auto panel = make_panel();
    constexpr int most = static_cast<int>(PanelConsole::most_lines);
    print_numbers(0, 3);
    ASSERT_TRUE(waits_for_last_line(*panel, "line 2"));
    print_numbers(3, 2 * most + 5);
    ASSERT_TRUE(waits_for_last_line(*panel, QString("line %1").arg(2 * most + 4)));
    const auto late_panel = make_panel();
    for (const QPlainTextEdit* each : {panel.get(), late_panel.get()}) {
        EXPECT_EQ(each->blockCount(), most);
        EXPECT_TRUE(each->toPlainText().startsWith(QString("line %1\n").arg(most + 5)));
    }
}

TEST_F(ConsolePanel, ScrollsAlongUnlessThePersonHasScrolledUp) {
    const auto panel = make_panel();
    QScrollBar& bar = *panel->verticalScrollBar();
    print_numbers(0, 500);
    ASSERT_TRUE(waits_for_last_line(*panel, "line 499"));
    EXPECT_GT(bar.maximum(), 0);
    EXPECT_EQ(bar.value(), bar.maximum());

    const auto scroll = [&](int place) {
        bar.setSliderPosition(place);
        bar.triggerAction(QAbstractSlider::SliderMove);
    };
    scroll(200);
    const auto first_line = [&] { return panel->cursorForPosition({4, 8}).block().text(); };
    const QString seen = first_line();
    print_numbers(500, 600);
    ASSERT_TRUE(waits_for_last_line(*panel, "line 599"));
    EXPECT_EQ(first_line(), seen);
    // The oldest lines go, and the others move up.
    print_numbers(600, static_cast<int>(PanelConsole::most_lines) + 100);
    ASSERT_TRUE(waits_for_last_line(*panel, QString("line %1").arg(PanelConsole::most_lines + 99)));
    EXPECT_EQ(first_line(), seen);

    scroll(bar.maximum());
    print("last");
    ASSERT_TRUE(waits_for_last_line(*panel, "last"));
    EXPECT_EQ(bar.value(), bar.maximum());
}

TEST_F(ConsolePanel, StandsAtItsEndWhenItIsShown) {
    std::unique_ptr<QPlainTextEdit> panel(dynamic_cast<QPlainTextEdit*>(console->make_panel(nullptr)));
    print_numbers(0, 30);
    ASSERT_TRUE(waits_for_last_line(*panel, "line 29"));
    panel->resize(400, 100);
    panel->show();
    QScrollBar& bar = *panel->verticalScrollBar();
    EXPECT_GT(bar.maximum(), 0);
    EXPECT_EQ(bar.value(), bar.maximum());
    panel->resize(200, 60);
    print("last");
    ASSERT_TRUE(waits_for_last_line(*panel, "last"));
    EXPECT_EQ(bar.value(), bar.maximum());
}

TEST_F(ConsolePanel, IsClearedByItsMenuAndOutlivesTheConsole) {
    const auto panel = make_panel();
    const auto other = make_panel();
    const auto clear = [&] {
        QTimer::singleShot(0, [] {
            auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_NE(menu, nullptr);
            QTest::keyClick(menu, Qt::Key_L); // Clear
            menu->close();
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5}, panel->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(panel->viewport(), &event);
    };
    print("one");
    ASSERT_TRUE(waits_for_last_line(*other, "one"));
    clear();
    EXPECT_EQ(panel->toPlainText() + other->toPlainText(), "");
    print("two");
    ASSERT_TRUE(waits_for_last_line(*panel, "two"));
    EXPECT_EQ(panel->toPlainText(), "two");
    print("never seen");
    console.reset();
    QTest::qWait(100);
    EXPECT_EQ(panel->toPlainText(), "two");
    clear();
    EXPECT_EQ(panel->toPlainText(), "");
}

TEST(PanelConsole, TellsTheTerminalAtOnce) {
    Terminal terminal;
    PanelConsole console(&terminal);
    testing::internal::CaptureStderr();
    console.print("to both", 7);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "to both\n");
}

} // namespace
} // namespace vantaro::core
