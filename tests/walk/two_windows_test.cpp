// Several editors at once, and the main window closed while they are at work.

#include "tests/walk/walk_fixture.h"

#include <gmock/gmock.h>

namespace vantaro::test {
namespace {

using namespace quorvex::editor_control;
using testing::StartsWith;

class OpenWindows : public Walk {
protected:
    OpenWindows() {
        window().on_closed = [this] { has_closed_ = true; };
        add_files(album_);
        select_all();
    }
    bool has_closed_ = false;
};

TEST_F(OpenWindows, AreIndependentAndSeeEachOthersRuns) {
    const Editor first = open_editor();
    activate(window());
    const Editor second = open_editor();
    EXPECT_NE(first.window().pos(), second.window().pos());
    add(first, "Set value...", {{1019, "title"}, {1020, "New"}});
    add(second, "Copy values between fields...", {{1006, "title"}, {1020, "mood"}});
    EXPECT_THAT(second.previews(), StartsWith("MOOD = \"Morning Tide\"|"));
    first.click(quorvex::editor_control::run);
    EXPECT_TRUE(second.window().isEnabled());
    ASSERT_TRUE(wait_until_idle());
    EXPECT_THAT(second.column(0), StartsWith("New|New|"));
    EXPECT_THAT(second.previews(), StartsWith("MOOD = \"New\"|MOOD = \"New\"|"));
    first.window().close();
    EXPECT_TRUE(wait_for([&] { return first.is_gone(); }));
    second.click(quorvex::editor_control::run);
    ASSERT_TRUE(wait_until_idle());
    EXPECT_THAT(in_files("MOOD"), StartsWith("New|New|"));
    EXPECT_TRUE(window().close());
    EXPECT_TRUE(has_closed_);
    EXPECT_FALSE(second.is_open());
}

TEST_F(OpenWindows, CloseWithTheirDialogsOpen) {
    const Editor editor = open_editor();
    editor.add("Set value...");
    EXPECT_TRUE(window().close());
    EXPECT_TRUE(has_closed_);
}

TEST_F(OpenWindows, CloseDuringARun) {
    const Editor editor = open_editor();
    add(editor, "Set value...", {{1019, "title"}, {1020, "New"}});
    editor.click(quorvex::editor_control::run);
    answer_next(QMessageBox::Yes);
    EXPECT_TRUE(window().close());
    EXPECT_TRUE(has_closed_);
    EXPECT_THAT(take_asked(), StartsWith("Quit: "));
}

TEST_F(OpenWindows, CloseDuringAnUndo) {
    const Editor editor = open_editor();
    add(editor, "Set value...", {{1019, "title"}, {1020, "New"}});
    const std::vector<std::string> before = bytes();
    editor.click(quorvex::editor_control::run);
    ASSERT_TRUE(wait_until_idle());
    const std::vector<std::string> after = bytes();
    answer_next(QMessageBox::Yes);
    window().undo_last_run();
    answer_next(QMessageBox::Yes);
    EXPECT_TRUE(window().close());
    EXPECT_TRUE(has_closed_);
    host().wait_until_idle();
    const std::vector<std::string> now = bytes();
    for (std::size_t i = 0; i < now.size(); ++i)
        EXPECT_TRUE(now[i] == before[i] || now[i] == after[i]);
}

} // namespace
} // namespace vantaro::test
