// The editor's Scripts group: named scripts, and script files.

#include "actions/fixed_value.h"
#include "actions/remove_fields.h"
#include "tests/support/fake_actions.h"
#include "tests/support/temporary_folder.h"
#include "tests/ui/editor_fixture.h"
#include "vantaro/services/abort_signal.h"
#include "vantaro/services/local_files.h"

#include <QFileDialog>
#include <QTimer>

namespace quorvex {
namespace {

using namespace vantaro;
using namespace editor_control;
using test::Editor;

constexpr const char* incomplete = "asked Warning: Some parts of the script failed to load. [ok] in a window";

class EditorScripts : public test::Editors {
protected:
    EditorScripts() {
        save_script("Rock", {{SetValue::kind, "GENRE\nRock"}});
        save_script("Rock ballads",
                    {{RemoveField::kind, "A"}, {test::kind(7), "?"}, {RemoveField::kind, "B"}});
    }

    Editor open_named(const char* name) {
        const Editor editor = open_editor("a");
        editor.control<QComboBox>(script_name).setEditText(name);
        return editor;
    }
    // The host that has it goes after the fixture's members.
    static inline core::AbortSignal interrupt_;
    static inline core::LocalFileSystem files_{interrupt_};

    static std::string stored(const std::string& name) {
        const auto found = script_library().find_script(name);
        if (!found)
            return "none";
        const StoredScript& script = script_library().scripts()[*found];
        std::string text = script.name + ':';
        for (const StoredAction& action : script.actions)
            text += ' ' + action.parameters;
        return text;
    }
    /// Those of the names that fit the dialog's filter where letters count.
    static std::string offered(const QFileDialog& dialog, const QStringList& names) {
        const QString filter = dialog.nameFilters().value(0);
        const QStringList patterns =
            filter.mid(filter.indexOf('(') + 1).chopped(1).split(' ', Qt::SkipEmptyParts);
        std::string text;
        for (const QString& name : names)
            if (std::ranges::any_of(patterns, [&](const QString& pattern) {
                    return QRegularExpression::fromWildcard(pattern, Qt::CaseSensitive)
                        .match(name)
                        .hasMatch();
                }))
                text += name.toStdString() + ' ';
        return text;
    }
    /// Presses the button, and takes that file in the dialog that opens; "" leaves it.
    static void click_and_choose(const Editor& editor, int button, const std::string& file) {
        QTimer::singleShot(0, [&] {
            auto* dialog = dynamic_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog);
            EXPECT_EQ(dialog->windowTitle(), button == export_file   ? "Export script"
                                             : button == import_file ? "Import script"
                                                                     : "Append script");
            EXPECT_EQ(offered(*dialog, {"a.qvx", "A.QVX", "a.Qvx", "a.qvxx", "qvx"}), "a.qvx A.QVX a.Qvx ");
            dialog->setOption(QFileDialog::DontConfirmOverwrite);
            if (file.empty())
                return dialog->reject();
            const std::size_t slash = file.rfind('/');
            dialog->setDirectory(QString::fromStdString(file.substr(0, slash)));
            dialog->findChild<QLineEdit*>("fileNameEdit")
                ->setText(QString::fromStdString(file.substr(slash + 1)));
            QMetaObject::invokeMethod(dialog, "accept");
        });
        editor.click(button);
    }
};

TEST_F(EditorScripts, AskForAName) {
    const Editor editor = open_named("");
    for (const int button : {save, load, append, delete_script}) {
        editor.control(help).setFocus();
        editor.click(button);
        EXPECT_EQ(editor.message(), "1020: Please enter script name.") << button;
        EXPECT_EQ(editor.focused(), script_name);
    }
    editor.control<QComboBox>(script_name).setEditText("Jazz");
    for (const int button : {load, append, delete_script}) {
        editor.click(button);
        EXPECT_EQ(editor.message(), "1020: Script of this name doesn't exist.") << button;
    }
    EXPECT_EQ(host_.take_events(), "");
}

TEST_F(EditorScripts, AreSaved) {
    const Editor editor = open_named("rock");
    editor.add("Remove all fields");
    for (const std::uint32_t answer : {button::no, 0U}) {
        answer_ = answer;
        editor.click(save);
        EXPECT_EQ(host_.take_events(),
                  "asked Warning: Script of this name already exists. Overwrite ? in a window");
        EXPECT_EQ(stored("Rock"), "Rock: GENRE\nRock");
    }
    answer_ = button::yes;
    editor.click(save);
    host_.take_events();
    EXPECT_EQ(stored("ROCK"), "rock: ");
    EXPECT_EQ(editor.name_list(), "Rock|Rock ballads|") << "the list keeps its line";
    editor.control<QComboBox>(script_name).setEditText("Pop");
    editor.click(save);
    EXPECT_EQ(host_.take_events(), "");
    EXPECT_EQ(stored("Pop"), "Pop: ");
    EXPECT_EQ(editor.name_list(), "Pop|Rock|Rock ballads|");
    EXPECT_EQ(editor.text(script_name), "Pop");
}

TEST_F(EditorScripts, AreLoadedOrAppended) {
    const Editor editor = open_named("ROCK");
    editor.add("Remove all fields");
    editor.click(append);
    EXPECT_EQ(editor.actions(), "*Remove all fields|Set \"GENRE\" = \"Rock\"|");
    editor.click(load);
    EXPECT_EQ(editor.actions(), "Set \"GENRE\" = \"Rock\"|");
    EXPECT_EQ(editor.previews(), "GENRE = \"Rock\"|");
    EXPECT_EQ(host_.take_events(), "");
    editor.control<QComboBox>(script_name).setEditText("Rock ballads");
    editor.click(append);
    EXPECT_EQ(host_.take_events(), incomplete);
    EXPECT_EQ(editor.actions(), "Set \"GENRE\" = \"Rock\"|Remove field: \"A\"|Remove field: \"B\"|");
}

TEST_F(EditorScripts, AreDeleted) {
    const Editor editor = open_named("rOCK");
    editor.click(delete_script);
    EXPECT_EQ(stored("Rock"), "none");
    EXPECT_EQ(editor.name_list(), "Rock ballads|");
    EXPECT_EQ(editor.text(script_name), "");
    EXPECT_EQ(host_.take_events(), "") << "without a question";
}

TEST_F(EditorScripts, AreCleared) {
    const Editor editor = open_named("Rock");
    editor.click(clear);
    EXPECT_EQ(host_.take_events(), "") << "there is nothing to clear";
    editor.click(load);
    answer_ = button::cancel;
    editor.click(clear);
    EXPECT_EQ(host_.take_events(), "asked Warning: Clear all actions ? [ok] [cancel] in a window");
    EXPECT_NE(editor.actions(), "");
    answer_ = button::ok;
    editor.click(clear);
    EXPECT_EQ(editor.actions(), "");
    EXPECT_EQ(editor.previews(), "No changes|");
    EXPECT_EQ(stored("Rock"), "Rock: GENRE\nRock");
}

TEST_F(EditorScripts, GoToFilesAndComeBack) {
    host_.offer<FileSystem>(Ref<FileSystem>(&files_));
    const test::TemporaryFolder folder;
    const Editor editor = open_named("Rock");
    click_and_choose(editor, export_file, "");
    click_and_choose(editor, export_file, folder.path("empty"));
    EXPECT_EQ(folder.read("empty.qvx").size(), 24U) << "with the extension of script files";
    editor.click(load);
    click_and_choose(editor, export_file, folder.path("rock.qvx"));
    editor.add("Remove all fields");
    click_and_choose(editor, append_file, folder.path("rock.qvx"));
    EXPECT_EQ(editor.actions(), "Set \"GENRE\" = \"Rock\"|*Remove all fields|Set \"GENRE\" = \"Rock\"|");
    click_and_choose(editor, import_file, folder.path("rock.qvx"));
    EXPECT_EQ(editor.actions(), "Set \"GENRE\" = \"Rock\"|");
    EXPECT_EQ(host_.take_events(), "");

    click_and_choose(editor, import_file, folder.write("bad.qvx", "this is no script at all"));
    EXPECT_EQ(host_.take_events(),
              "showed Error: Error loading quorvex script (Unsupported format or corrupted file).");
    EXPECT_EQ(editor.actions(), "Set \"GENRE\" = \"Rock\"|") << "it is left alone";
    folder.link("/dev/full", "full.qvx");
    click_and_choose(editor, export_file, folder.path("full.qvx"));
    EXPECT_EQ(host_.take_events(), "showed Error: Error writing quorvex script (No space left on device).");
}

} // namespace
} // namespace quorvex
