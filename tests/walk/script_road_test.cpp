// A script from its first action to the files that it changed, and back.

#include "tests/walk/walk_fixture.h"

#include <gmock/gmock.h>

#include <QLabel>
#include <QStatusBar>

namespace vantaro::test {
namespace {

using namespace quorvex::editor_control;
using testing::HasSubstr;
using testing::StartsWith;

class ScriptRoad : public Walk {
protected:
    Editor open_editor_on_all() {
        add_files(album_);
        select_all();
        return open_editor();
    }
    void run(const Editor& editor) {
        activate(editor.window());
        QTest::keyClick(&editor.list(), Qt::Key_Return);
        EXPECT_FALSE(editor.window().isEnabled());
        ASSERT_TRUE(wait_until_idle());
    }
};

struct Step {
    const char* kind;
    /// What is typed into the kind's dialog; nothing where it has none.
    std::vector<std::pair<int, std::string>> typed;
    const char* listed;
};

const Step every_kind[] = {
    {"Set value...", {{1019, "mood"}, {1020, "Calm"}}, "Set \"MOOD\" = \"Calm\""},
    {"Add value...", {{1019, "mood"}, {1020, "Sea"}}, "Add \"MOOD\" = \"Sea\""},
    {"Remove field...", {{1001, "comment"}}, "Remove field: \"COMMENT\""},
    {"Remove all fields except for...",
     {{1001, "title;artist;album;mood"}},
     "Remove all fields except for \"title;artist;album;mood\""},
    {"Remove values...", {{1001, "mood"}, {1002, "calm"}}, "Remove value: MOOD = calm, case-insensitive"},
    {"Replace value...",
     {{1001, "mood"}, {1002, "Sea"}, {1003, "Blue / Sea"}},
     "Replace MOOD value \"Sea\" with \"Blue / Sea\", case-insensitive"},
    {"Split field by separator...",
     {{1024, "mood"}, {1023, " / "}},
     "Split \"MOOD\" field by \" / \" separator"},
    {"Split multiple artist fields", {}, "Split multiple artist fields"},
    {"Copy values between fields...", {{1006, "mood"}, {1020, "style"}}, "Copy \"MOOD\" to \"STYLE\""},
    {"Format value from other fields...",
     {{1024, "title"}, {1008, "$upper(%title%)"}},
     "Format \"TITLE\" using \"$upper(%title%)\""},
    {"Guess values from file names...",
     {{1007, "%position% - %name%"}},
     "Guess values from filename: \"%position% - %name%\""},
    {"Guess values from other fields...",
     {{1028, "%name% x"}, {1008, "%first% %others%"}},
     "Guess value from other fields"},
    {"Auto track number...", {{1001, ""}}, "Auto track number"},
    {"Input data (one line per track)...",
     {{1001, "%line%"}, {1002, "one\ntwo"}},
     "Input data (one line per track)..."},
    {"Embed cuesheet", {}, "Embed cuesheet"},
};

TEST_F(ScriptRoad, OfEveryKindAddedRunAndTakenBack) {
    folder_.write("album/02 - Gulls over Slate.cue", "REM a cue sheet");
    const Editor editor = open_editor_on_all();
    const std::vector<std::string> before = bytes();
    std::string listed;
    for (const Step& step : every_kind) {
        if (step.typed.empty()) {
            editor.add(step.kind);
        } else {
            editor.add(step.kind);
            editor.dialog().press_cancel();
            editor.list().clearSelection();
            EXPECT_EQ(editor.actions(), listed) << "cancelled";
            add(editor, step.kind, step.typed);
        }
        listed += std::string(step.listed) + '|';
        editor.list().clearSelection();
        EXPECT_EQ(editor.actions(), listed);
    }
    EXPECT_THAT(editor.column(0), StartsWith("Morning Tide|Gulls over Slate|"));
    const std::string preview = editor.previews();
    EXPECT_THAT(preview, StartsWith("COMPOSER removed; DATE removed; FIRST = \"Morning\"; GENRE removed; "
                                    "LINE = \"one\"; MOOD = \"Blue\"; \"Sea\"; NAME = \"Morning Tide\"; "
                                    "OTHERS = \"Tide x\"; POSITION = \"01\"; STYLE = \"Blue\"; \"Sea\"; "
                                    "TITLE = \"MORNING TIDE\"; TOTALTRACKS = \"10\"|"
                                    "CUESHEET = \"REM a cue sheet\"; DATE removed; FIRST = \"Gulls\";"));
    EXPECT_EQ(bytes(), before) << "a preview writes nothing";

    run(editor);
    EXPECT_TRUE(editor.window().isEnabled());
    EXPECT_EQ(editor.focused(), action_list);
    EXPECT_THAT(editor.control<QLabel>(change_count).text().toStdString(), StartsWith("10 files changed"));
    EXPECT_EQ(window().statusBar()->currentMessage(), "10 files changed. Ctrl+Z takes it back.");
    EXPECT_EQ(editor.text(script_name), "");
    EXPECT_EQ(editor.name_list(), "[last used]|");
    std::string of_all;
    for (std::size_t i = 0; i < files().size(); ++i)
        of_all += "Blue;Sea|";
    EXPECT_EQ(in_files("MOOD"), of_all);
    EXPECT_EQ(in_files("STYLE"), of_all);
    EXPECT_THAT(in_files("TITLE"), StartsWith("MORNING TIDE|GULLS OVER SLATE|"));
    EXPECT_EQ(in_files("TRACKNUMBER"), "1|2|3|4|5|6|7|8|9|10|");
    EXPECT_EQ(in_files("LINE"), "one|two|||||||||");
    EXPECT_EQ(in_files("FIRST"), "Morning|Gulls|Rope|The|Low|Lantern|Café|Fog|Harbour|Night|");
    EXPECT_EQ(in_files("COMMENT"), "||||||||||");
    EXPECT_EQ(in_files("CUESHEET"), "|REM a cue sheet|||||||||");
    EXPECT_EQ(listed_title(0), "MORNING TIDE");

    answer_next(QMessageBox::Yes);
    window().undo_last_run();
    ASSERT_TRUE(wait_until_idle());
    EXPECT_THAT(take_asked(),
                AllOf(StartsWith("Undo last run: The run \"Set \"MOOD\" = \"Calm\" and 14 more\" of "),
                      HasSubstr(" changed 10 files. Give each")));
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(editor.previews(), preview) << "it follows the files";
    EXPECT_EQ(listed_title(0), "Morning Tide");
}

TEST_F(ScriptRoad, ThroughTheLibraryAndFiles) {
    const Editor editor = open_editor_on_all();
    add(editor, "Set value...", {{1019, "mood"}, {1020, "Calm"}});
    add(editor, "Remove field...", {{1001, "comment"}});
    activate(editor.window());
    QTest::keyClick(&editor.list(), Qt::Key_Up, Qt::AltModifier);
    QTest::keyClick(&editor.list(), Qt::Key_Down);
    QTest::keyClick(&editor.list(), Qt::Key_F2);
    const Dialog dialog = editor.dialog();
    dialog.type(1020, "Stormy");
    dialog.press_ok();
    const std::string script = "Remove field: \"COMMENT\"|*Set \"MOOD\" = \"Stormy\"|";
    EXPECT_EQ(editor.actions(), script);
    const std::string loaded = "Remove field: \"COMMENT\"|Set \"MOOD\" = \"Stormy\"|";

    const auto name_it = [&](const char* name) {
        editor.control<QComboBox>(script_name).setEditText(QString::fromUtf8(name));
    };
    name_it("Storm");
    editor.click(save);
    answer_next(QMessageBox::Yes);
    editor.click(save);
    EXPECT_EQ(take_asked(), "Warning: Script of this name already exists. Overwrite ?|");
    choose_file_next(folder_.path("storm.qvx"));
    editor.click(export_file);
    answer_next(QMessageBox::Cancel);
    editor.click(clear);
    EXPECT_EQ(editor.actions(), script);
    answer_next(QMessageBox::Ok);
    editor.click(clear);
    EXPECT_EQ(take_asked(), "Warning: Clear all actions ?|Warning: Clear all actions ?|");
    EXPECT_EQ(editor.actions(), "");
    EXPECT_EQ(editor.previews(), "No changes|No changes|No changes|No changes|No changes|No changes|"
                                 "No changes|No changes|No changes|No changes|");
    editor.click(load);
    EXPECT_EQ(editor.actions(), loaded);
    editor.click(append);
    EXPECT_EQ(editor.actions(), loaded + loaded);
    choose_file_next(folder_.path("storm.qvx"));
    editor.click(import_file);
    EXPECT_EQ(editor.actions(), loaded);
    choose_file_next(folder_.path("storm.qvx"));
    editor.click(append_file);
    EXPECT_EQ(editor.actions(), loaded + loaded);
    editor.click(delete_script);
    EXPECT_EQ(editor.name_list(), "");

    editor.click(close_when_done);
    run(editor);
    EXPECT_TRUE(wait_for([&] { return editor.is_gone(); }));
    EXPECT_THAT(in_files("MOOD"), StartsWith("Stormy|Stormy|"));

    // By and by it is stored, without anybody saying so.
    EXPECT_TRUE(wait_for([this] {
        const std::string stored = stored_settings();
        return stored.find("[last used]") != stored.npos && stored.find("MOOD\nStormy") != stored.npos;
    }));
}

TEST_F(ScriptRoad, IsNotLostInSilenceWhereItCannotBeStored) {
    const Editor editor = open_editor_on_all();
    std::filesystem::remove_all(folder_.path("config"));
    folder_.write("config", "in the way");
    editor.add("Embed cuesheet");
    editor.control<QComboBox>(script_name).setEditText("Cues");
    editor.click(save);
    editor.window().close();
    ASSERT_TRUE(wait_for([] { return shows_message("could not be stored"); }));
    answer_next(QMessageBox::No);
    EXPECT_FALSE(window().close());
    answer_next(QMessageBox::Yes);
    EXPECT_TRUE(window().close());
    EXPECT_THAT(take_asked(), StartsWith("Quit: Settings and saved scripts could not be stored in "));
}

} // namespace
} // namespace vantaro::test
