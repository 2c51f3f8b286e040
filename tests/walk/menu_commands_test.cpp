// Saved scripts straight from the menu, and by their keys.

#include "tests/walk/walk_fixture.h"

#include "vantaro/application/context_menu.h"

#include <gmock/gmock.h>

#include <QKeySequenceEdit>

namespace vantaro::test {
namespace {

using namespace quorvex::editor_control;

using testing::HasSubstr;
using testing::StartsWith;

constexpr int file_count = 101;

class SavedScript : public Walk {
protected:
    /// Of each file of the folder, how often.
    std::map<std::string, int> genres() const {
        std::map<std::string, int> found;
        for (int i = 0; i < file_count; ++i) {
            TrackInfoRecord info;
            read_tags(file(i), info);
            ++found[info.value(info.find_field("GENRE"), 0)];
        }
        return found;
    }
    std::string file(int number) const { return folder_.path("many/" + std::to_string(number) + ".ogg"); }
    void add_many() {
        folder_.make_folder("many");
        for (int i = 0; i < file_count; ++i)
            std::filesystem::copy(album_ + "/03 - Rope and Tar.ogg", file(i));
        add_files(folder_.path("many"));
    }
    void save_script(const char* name) {
        select_rows(0, 1);
        const Editor editor = open_editor();
        add(editor, "Set value...", {{1019, "genre"}, {1020, "Shanty"}});
        editor.control<QComboBox>(script_name).setEditText(name);
        editor.click(save);
        editor.window().close();
        ASSERT_TRUE(wait_for([&] { return editor.is_gone(); }));
        activate(window());
    }
};

TEST_F(SavedScript, AsksAboveAHundredTracks) {
    add_many();
    save_script("Sea & shore/1");
    const std::string path = "Tagging/Scripts/Sea  shore/1"; // the menu's text without "&"
    const std::string old_genre = genres().begin()->first;
    select_rows(0, 100);
    choose_in_track_menu(path);
    ASSERT_TRUE(wait_until_idle());
    EXPECT_EQ(genres(), (std::map<std::string, int>{{"Shanty", 100}, {old_genre, 1}}));
    EXPECT_EQ(take_asked(), "");

    select_rows(0, 101);
    answer_next(QMessageBox::No);
    choose_in_track_menu(path);
    ASSERT_TRUE(wait_until_idle());
    EXPECT_EQ(genres().at(old_genre), 1);
    answer_next(QMessageBox::Yes);
    choose_in_track_menu(path);
    ASSERT_TRUE(wait_until_idle());
    EXPECT_EQ(genres().at("Shanty"), 101);
    const std::string question = "Warning: You're about to update tags of 101 tracks. Continue?|";
    EXPECT_EQ(take_asked(), question + question);
}

TEST_F(SavedScript, RunsByItsKeys) {
    add_files(album_);
    save_script("Shanty");
    std::string guid;
    for (const MenuCommand& command : context_menu(host(), {}, menu_caller::command_list))
        if (command.name == "Shanty")
            guid = to_text(command.guid);
    QAction* assign = nullptr;
    for (QAction* action : window().findChildren<QAction*>())
        if (action->text().contains("Keyboard shortcuts"))
            assign = action;
    ASSERT_TRUE(assign);
    with_modal([](QWidget& dialog) {
        auto& list = child<QTreeWidget>(dialog);
        list.setCurrentItem(find_line(list, "Tagging/Scripts/Shanty"));
        QTest::keyClick(&child<QKeySequenceEdit>(dialog), Qt::Key_F9);
        ASSERT_TRUE(wait_for([&] { return button(dialog, "Assign").isEnabled(); }));
        press(dialog, "Assign");
        press(dialog, "OK");
    });
    assign->trigger();
    EXPECT_THAT(folder_.read("config/shortcuts.json"), HasSubstr(guid + "\": \"F9\""));

    activate(window());
    select_rows(2, 2);
    QTest::keyClick(&window().list(), Qt::Key_F9);
    ASSERT_TRUE(wait_until_idle());
    EXPECT_THAT(in_files("GENRE"), StartsWith("Ambient|ambient|Shanty|Shanty|Electronica|"));
}

} // namespace
} // namespace vantaro::test
