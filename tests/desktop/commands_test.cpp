#include "tests/desktop/desktop_fixture.h"

#include "vantaro/tags/tag_file.h"

#include <gmock/gmock.h>

#include <QMenu>
#include <QStatusBar>

namespace vantaro::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::string file_genre(const std::string& path) {
    TrackInfoRecord info;
    read_tags(path, info);
    const std::size_t field = info.find_field("GENRE");
    return field == no_field ? "" : info.value(field, 0);
}

/// A line for each entry, submenus indented.
std::string menu_text(const QMenu& menu, const std::string& indent = "") {
    std::string text;
    for (const QAction* entry : menu.actions()) {
        text += indent + (entry->isSeparator() ? "-" : entry->text().toStdString()) + "\n";
        if (entry->menu())
            text += menu_text(*entry->menu(), indent + "  ");
    }
    return text;
}

class Commands : public WithDesktop {
protected:
    Commands() {
        folder_.write("config/shortcuts.json", R"({"{11111111-2222-3333-4444-555555555555}": "Ctrl+Z"})");
        open();
        load(album_);
    }
    QMenu* context_menu_of_row(int row) {
        TrackList& list = window_->list();
        select(row);
        emit list.customContextMenuRequested(list.visualRect(list.currentIndex()).center());
        return part<QMenu>("track menu");
    }
    void press(Qt::Key key) {
        window_->activateWindow();
        ASSERT_TRUE(wait_for([this] { return window_->isActiveWindow(); }));
        QTest::keyClick(&window_->list(), key, Qt::ControlModifier);
    }
    std::string status() const { return window_->statusBar()->currentMessage().toStdString(); }
};

TEST_F(Commands, StandInTheMenuByTheirPaths) {
    QMenu* menu = context_menu_of_row(0);
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu_text(*menu), "Tagging\n"
                                "  Test\n"
                                "    Set genre\tCtrl+Z\n"
                                "    Fail\n"
                                "    Rock && Roll/AC\n"
                                "      A/B\n"
                                "-\n"
                                "&Open folder\n"
                                "&Remove from list\n");
    for (QAction* found : menu->findChildren<QAction*>())
        if (found->text() == "Fail")
            found->trigger();
    EXPECT_THAT(messages_.texts, ElementsAre("Tagging/Test/Fail: no such luck"));
    menu->close();
}

TEST_F(Commands, AreThereWithoutThoseOfABrokenComponent) {
    class Broken final : public StaticService<ContextMenuItem> {
    public:
        std::size_t command_count() override { return 1; }
        void get_item_name(std::size_t, TextSink&) override {}
        void get_default_path(std::size_t, TextSink&) override { throw std::runtime_error("out of order"); }
        Guid get_item_guid(std::size_t) override { return {}; }
        bool get_item_description(std::size_t, TextSink&) override { return false; }
        ContextMenuNode* create_node(std::size_t, TrackHandle* const*, std::size_t, const Guid&) override {
            return nullptr;
        }
        void execute(std::size_t, const Guid&, TrackHandle* const*, std::size_t, const Guid&) override {}
    };
    Broken broken;
    host_.services().add_own<ContextMenuItem>(broken);
    open(); // finds the commands for their keys
    load(album_);
    QMenu* menu = context_menu_of_row(0);
    EXPECT_THAT(menu_text(*menu), HasSubstr("Set genre"));
    menu->close();
    close_window(); // before the component
}

TEST_F(Commands, RunByTheirKeysOnTheSelectedTracks) {
    press(Qt::Key_Z); // the window's own use of these keys has gone
    EXPECT_EQ(item_.count, 0U);
    EXPECT_EQ(status(), "Select the tracks first.");
    EXPECT_TRUE(question_.asked.empty());

    select(2);
    press(Qt::Key_Z);
    ASSERT_TRUE(wait_for_updates());
    EXPECT_EQ(item_.count, 1U);
    EXPECT_EQ(cell(2, Column::genre), "Changed");
    EXPECT_EQ(file_genre(album_ + "/03 - Rope and Tar.ogg"), "Changed");
    EXPECT_EQ(cell(3, Column::genre), "AMBIENT");
}

TEST_F(Commands, FindTheTagsInMemory) {
    for (int row = 0; row < window_->model().rowCount(); ++row)
        window_->model().track(row).hold({});
    window_->list().selectAll();
    press(Qt::Key_Z);
    ASSERT_TRUE(wait_for([this] { return item_.count > 0; }));
    EXPECT_EQ(item_.count, 10U);
    EXPECT_EQ(item_.held, 10U);
    ASSERT_TRUE(wait_for_updates());
    EXPECT_THAT(column(Column::genre), Each("Changed"));
}

TEST_F(Commands, AreUndoneStepByStep) {
    const std::string first = album_ + "/01 - Morning Tide.mp3";
    const std::string second = album_ + "/02 - Gulls over Slate.flac";
    const std::string old_first = folder_.read("album/01 - Morning Tide.mp3");
    for (const int row : {0, 1}) {
        select(row);
        press(Qt::Key_Z);
        ASSERT_TRUE(wait_for_updates());
    }
    question_.answer = button::no;
    window_->undo_last_run();
    ASSERT_EQ(question_.asked.size(), 1U);
    EXPECT_THAT(question_.asked[0], StartsWith("The run \"Tagging/Test/Set genre\" of "));
    EXPECT_THAT(question_.asked[0], HasSubstr("changed 1 file."));
    EXPECT_EQ(file_genre(second), "Changed");

    question_.answer = button::yes;
    window_->undo_last_run();
    ASSERT_TRUE(wait_for([this] { return status() == "1 file put back."; })) << status();
    ASSERT_TRUE(wait_for([this] { return cell(1, Column::genre) == "ambient"; }));
    EXPECT_EQ(file_genre(first), "Changed");
    window_->statusBar()->clearMessage();
    window_->undo_last_run();
    ASSERT_TRUE(wait_for([this] { return status() == "1 file put back."; }));
    EXPECT_EQ(folder_.read("album/01 - Morning Tide.mp3"), old_first);
    window_->undo_last_run();
    EXPECT_EQ(status(), "There is nothing to undo.");
}

TEST_F(Commands, UndoLeavesFilesAloneThatAreDifferentByNow) {
    window_->list().selectAll();
    press(Qt::Key_Z);
    ASSERT_TRUE(wait_for_updates());
    const std::string path = album_ + "/01 - Morning Tide.mp3";
    std::filesystem::resize_file(path, std::filesystem::file_size(path) + 1);
    window_->undo_last_run();
    ASSERT_TRUE(wait_for([this] { return status() == "9 files put back, 1 not."; })) << status();
}

} // namespace
} // namespace vantaro::test
