// The editor by keyboard: who takes Enter, where the focus is, and who gets it while the window waits.

#include "actions/fixed_value.h"
#include "tests/ui/editor_fixture.h"

#include <QLabel>

namespace quorvex {
namespace {

using namespace vantaro;
using namespace editor_control;
using test::Editor;

class EditorKeys : public test::Editors {
protected:
    EditorKeys() { save_script("[last used]", {{SetValue::kind, "A\nv"}}); }

    /// Presses the key where the focus is.
    static void press(const Editor& editor, Qt::Key key) {
        QTest::keyClick(editor.window().focusWidget(), key);
    }
    static void click_into(const Editor& editor) {
        editor.window().activateWindow(); // as the desktop does then
        QTest::qWait(50);
    }
    static bool becomes_active(const QWidget& window) {
        return QTest::qWaitFor([&] { return window.isActiveWindow(); }, 2000);
    }
};

TEST_F(EditorKeys, TheFocusStartsOnNoButton) {
    const Editor editor = open_editor("a");
    EXPECT_EQ(editor.focused(), action_list);
}

TEST_F(EditorKeys, EnterOnAButtonIsThatButton) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        for (const int id : {add, remove, clear, up, down, save, load, append, delete_script, export_file,
                             import_file, append_file, help, close}) {
            const Editor editor = open_editor("a b");
            auto& button = editor.control<QPushButton>(id);
            QObject::disconnect(&button, &QAbstractButton::clicked, nullptr, nullptr);
            int clicks = 0;
            QObject::connect(&button, &QAbstractButton::clicked, [&] { ++clicks; });
            button.setFocus();
            press(editor, key);
            EXPECT_EQ(clicks, 1) << id;
            EXPECT_EQ(host_.take_events(), "") << id << " runs nothing";
            editor.window().close();
            run_deleted();
        }
    }
    const Editor editor = open_editor("a");
    editor.control(close).setFocus();
    press(editor, Qt::Key_Return);
    run_deleted();
    EXPECT_TRUE(editor.is_gone());
    EXPECT_EQ(host_.take_events(), "");
    EXPECT_EQ(test::tags_text(tag_io_.track("a").tags), "TITLE=[Song a] ARTIST=[x]");
}

TEST_F(EditorKeys, EnterElsewhereIsRun) {
    for (const int id : {action_list, track_list, script_name, close_when_done, run}) {
        const Editor editor = open_editor("a");
        editor.control(close).setFocus(); // it hands Enter back when the focus goes on
        editor.control(id).setFocus();
        press(editor, Qt::Key_Return);
        EXPECT_EQ(host_.take_events(), "update of a, window, flags 8, watched") << id;
        editor.window().close();
        run_deleted();
    }
}

TEST_F(EditorKeys, TheKeyboardGoesToWhatTheWindowWaitsFor) {
    const Editor editor = open_editor("a");
    editor.select(0);
    editor.open(0);
    QDialog& settings = editor.dialog().window();
    ASSERT_TRUE(becomes_active(settings));
    click_into(editor);
    EXPECT_TRUE(becomes_active(settings)) << "a click into the disabled window";
    settings.reject();
    run_deleted();
    click_into(editor);
    EXPECT_TRUE(editor.window().isActiveWindow());

    tag_io_.carry_out_updates_late();
    editor.click(run);
    QDialog progress(&editor.window()); // as the host shows one
    progress.show();
    ASSERT_TRUE(becomes_active(progress));
    click_into(editor);
    EXPECT_TRUE(becomes_active(progress));
    progress.hide();
    tag_io_.carry_out_updates_late();
}

} // namespace
} // namespace quorvex
