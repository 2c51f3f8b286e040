// What was reported while everything started is seen in the window, since its console is hidden.

#include "tests/support/temporary_folder.h"
#include "tests/windows/window_access.h"
#include "vantaro/desktop/window_host.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QPlainTextEdit>
#include <QStatusBar>

namespace vantaro::test {
namespace {

using namespace vantaro::core;

class Start : public testing::Test {
protected:
    /// The lines of the message before the window; empty without one.
    static std::vector<std::string> told(WindowHost& program) {
        std::vector<std::string> lines;
        for (const auto* dialog : program.window().findChildren<QDialog*>()) {
            EXPECT_FALSE(dialog->isModal());
            for (const QString& line : dialog->findChild<QPlainTextEdit*>()->toPlainText().split('\n'))
                lines.push_back(line.toStdString());
        }
        return lines;
    }
    HostSetup setup() const {
        HostSetup setup;
        setup.config_dir = folder_.path("config");
        setup.state_dir = folder_.path("state");
        setup.component_dir = folder_.path("components");
        return setup;
    }

    const TemporaryFolder folder_;
    Interrupt interrupt_;
};

TEST_F(Start, SaysNothingWhereNothingIsToBeSaid) {
    WindowHost program(setup(), interrupt_);
    program.show();
    EXPECT_TRUE(program.window().isVisible());
    EXPECT_EQ(told(program), std::vector<std::string>());
}

TEST_F(Start, ShowsWhatWasReported) {
    folder_.write("config/preferences.json", "{");
    HostSetup with_lines = setup();
    with_lines.reported = {"Run 7 was cut off: 1 file has its new tags, 0 their old ones."};
    WindowHost program(with_lines, interrupt_);
    program.show();
    const std::vector<std::string> lines = told(program);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], with_lines.reported[0]);
    EXPECT_TRUE(lines[1].starts_with(folder_.path("config/preferences.json"))) << lines[1];
    EXPECT_EQ(program.window().statusBar()->currentMessage().toStdString(), lines[1]);

    // What was told before is not told again, and what comes later is.
    program.host().report_once(with_lines.reported[0]);
    program.host().report_once("Run 8 was cut off.");
    ASSERT_TRUE(QTest::qWaitFor([&] { return told(program).size() == 3; }));
    EXPECT_EQ(program.window().statusBar()->currentMessage(), "Run 8 was cut off.");
}

} // namespace
} // namespace vantaro::test
