// Saved scripts while another process saves some, too.

#include "tests/walk/walk_fixture.h"

#include <QProcess>

#include <gmock/gmock.h>

namespace vantaro::test {
namespace {

using namespace quorvex::editor_control;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class SharedScripts : public Walk {
protected:
    SharedScripts() {
        add_files(album_);
        select_all();
    }
    /// What the command for terminals prints about the scripts that are stored now.
    std::string other_process(const QStringList& arguments) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QUORVEX_PROGRAM,
                      QStringList{"--config-dir", QString::fromStdString(folder_.path("config")), "scripts"}
                          << arguments);
        EXPECT_TRUE(process.waitForFinished(20000));
        EXPECT_EQ(process.exitCode(), 0) << qPrintable(arguments.join(' '));
        return process.readAll().toStdString();
    }
    void import_elsewhere(const char* name, const char* title) {
        folder_.write("theirs.json", R"({"actions": [{"kind": "Set value", "field": "TITLE", "value": ")"
                                         + std::string(title) + R"("}]})");
        other_process({"import", "--name", name, QString::fromStdString(folder_.path("theirs.json"))});
    }
    static void save_as(const Editor& editor, const char* name) {
        editor.control<QComboBox>(script_name).setEditText(name);
        editor.click(save);
    }
};

TEST_F(SharedScripts, AreStoredAtOnceAndNoneIsLost) {
    const Editor editor = open_editor();
    add(editor, "Set value...", {{1019, "title"}, {1020, "Ours"}});
    import_elsewhere("Theirs", "Theirs");
    save_as(editor, "Ours");
    EXPECT_EQ(other_process({"list"}), "Theirs\nOurs\n") << "nothing has moved the focus, no time has passed";

    import_elsewhere("Both", "Theirs");
    save_as(editor, "Both");
    EXPECT_EQ(other_process({"list"}), "Theirs\nOurs\nBoth (2)\nBoth\n");
    EXPECT_THAT(other_process({"show", "Both (2)"}), AllOf(HasSubstr("Theirs"), Not(HasSubstr("Ours"))));
    EXPECT_THAT(other_process({"show", "Both"}), HasSubstr("Ours"));

    editor.click(quorvex::editor_control::delete_script);
    EXPECT_EQ(other_process({"list"}), "Theirs\nOurs\nBoth (2)\n");
}

TEST_F(SharedScripts, ComeIntoAWindowThatNobodyTouches) {
    import_elsewhere("Theirs", "First");
    const auto is_in_menu = [this] {
        const bool is_there = open_track_menu().contains("Tagging/Scripts/Theirs");
        QApplication::activePopupWidget()->close();
        return is_there;
    };
    EXPECT_TRUE(wait_for(is_in_menu));
    other_process({"delete", "Theirs"});
    EXPECT_TRUE(wait_for([&] { return !is_in_menu(); }));
    EXPECT_EQ(other_process({"list"}), "");
}

} // namespace
} // namespace vantaro::test
