// The editor's window: building a script, seeing what it does, running it.

#include "actions/fixed_value.h"
#include "actions/remove_fields.h"
#include "script/script_library.h"
#include "tests/support/fake_actions.h"
#include "tests/support/temporary_folder.h"
#include "tests/ui/editor_fixture.h"

#include <QLabel>
#include <QMimeData>
#include <QToolTip>

#include <algorithm>

namespace quorvex {
namespace {

using namespace vantaro;
using namespace editor_control;
using test::Dialog;
using test::Editor;

class EditorTest : public test::Editors {
protected:
    static constexpr const char* nothing = "No changes|No changes|";
};

TEST_F(EditorTest, OpensWithTheScriptLastRun) {
    const Editor empty = open_editor("a b");
    EXPECT_EQ(empty.window().windowTitle(), "Quorvex");
    EXPECT_EQ(empty.actions() + empty.text(script_name) + empty.name_list(), "");
    EXPECT_EQ(empty.column(0), "Song a|Song b|");
    EXPECT_EQ(empty.previews(), nothing);
    EXPECT_EQ(test::shown_balloon(empty.window()), nullptr);

    save_script("Zebra", {});
    save_script("apple", {});
    save_script("[last used]",
                {{SetValue::kind, "A\nv"}, {test::kind(7), "unknown"}, {RemoveAllFields::kind, ""}});
    const Editor editor = open_editor("a b");
    EXPECT_EQ(editor.actions(), "Set \"A\" = \"v\"|Remove all fields|");
    EXPECT_EQ(editor.name_list(), "[last used]|apple|Zebra|");
    EXPECT_EQ(editor.text(script_name), "[last used]");
    EXPECT_EQ(editor.previews(), "ARTIST removed; TITLE removed|ARTIST removed; TITLE removed|");
    EXPECT_EQ(host_.take_events(), "") << "what cannot be loaded is not told here";
}

TEST_F(EditorTest, BuildsAScript) {
    const Editor editor = open_editor("a b");
    const std::string kinds = editor.add("Set value...");
    EXPECT_TRUE(kinds.starts_with("Add value...|Auto track number...|Copy values")) << kinds;
    EXPECT_FALSE(editor.window().isEnabled());
    EXPECT_EQ(editor.actions(), "*Set value...|");
    editor.dialog().press_cancel();
    run_deleted();
    EXPECT_TRUE(editor.window().isEnabled());
    EXPECT_EQ(editor.actions(), "") << "cancelled";

    editor.add("Set value...");
    const Dialog set = editor.dialog();
    set.type(1019, "title");
    set.type(1020, "v");
    EXPECT_EQ(editor.previews(), nothing) << "not before it is confirmed";
    set.press_ok();
    run_deleted();
    EXPECT_EQ(editor.actions(), "*Set \"TITLE\" = \"v\"|");
    EXPECT_EQ(editor.previews(), "TITLE = \"v\"|TITLE = \"v\"|");

    editor.add("Remove all fields");
    EXPECT_TRUE(editor.window().isEnabled());
    EXPECT_EQ(editor.actions(), "Set \"TITLE\" = \"v\"|*Remove all fields|");
    EXPECT_EQ(editor.previews(), "ARTIST removed; TITLE removed|ARTIST removed; TITLE removed|");
    editor.click(down);
    EXPECT_EQ(editor.actions(), "Set \"TITLE\" = \"v\"|*Remove all fields|") << "it is the last";
    editor.click(up);
    EXPECT_EQ(editor.actions(), "*Remove all fields|Set \"TITLE\" = \"v\"|");
    EXPECT_EQ(editor.previews(), "ARTIST removed; TITLE = \"v\"|ARTIST removed; TITLE = \"v\"|");
    editor.click(up);
    EXPECT_EQ(editor.actions(), "*Remove all fields|Set \"TITLE\" = \"v\"|");

    // An action that is there already keeps its effect while it is edited, and its settings when cancelled.
    editor.open(0);
    EXPECT_TRUE(editor.window().isEnabled()) << "there is nothing to set";
    editor.open(1);
    EXPECT_TRUE(editor.window().isEnabled()) << "the double click is for the selected row";
    editor.select(1);
    editor.open(1);
    EXPECT_FALSE(editor.window().isEnabled());
    editor.dialog().type(1020, "w");
    EXPECT_EQ(editor.previews(), "ARTIST removed; TITLE = \"v\"|ARTIST removed; TITLE = \"v\"|");
    editor.dialog().press_cancel();
    run_deleted();
    EXPECT_EQ(editor.actions(), "Remove all fields|*Set \"TITLE\" = \"v\"|");
    QApplication::setActiveWindow(&editor.window());
    QTest::keyClick(&editor.list(), Qt::Key_F2);
    editor.dialog().type(1020, "w");
    editor.dialog().press_ok();
    run_deleted();
    EXPECT_EQ(editor.actions(), "Remove all fields|*Set \"TITLE\" = \"w\"|");

    QApplication::setActiveWindow(&editor.window());
    QTest::keyClick(&editor.list(), Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(editor.actions(), "*Set \"TITLE\" = \"w\"|Remove all fields|");
    QTest::keyClick(&editor.list(), Qt::Key_Delete);
    EXPECT_EQ(editor.actions(), "*Remove all fields|");
    editor.click(remove);
    editor.click(remove);
    EXPECT_EQ(editor.actions(), "");
    EXPECT_EQ(editor.previews(), nothing);
    EXPECT_EQ(host_.take_events(), "");
}

TEST_F(EditorTest, RowsAreMovedWithTheMouse) {
    save_script("[last used]",
                {{RemoveField::kind, "A"}, {RemoveField::kind, "B"}, {SetValue::kind, "ARTIST\nc"}});
    const Editor editor = open_editor("a");
    const auto move = [&](int from, int to) { editor.list().model()->moveRow({}, from, {}, to); };
    const auto script = [&] {
        editor.control<QComboBox>(script_name).setEditText("s");
        answer_ = button::yes;
        editor.click(save);
        host_.take_events();
        std::string text;
        for (const StoredAction& action :
             script_library().scripts()[*script_library().find_script("s")].actions)
            text += action.parameters.substr(0, 1);
        return text;
    };
    move(0, 3);
    EXPECT_EQ(script(), "BAA") << "the set value of ARTIST comes second";
    EXPECT_EQ(editor.actions(), "Remove field: \"B\"|Set \"ARTIST\" = \"c\"|Remove field: \"A\"|");
    move(2, 0);
    EXPECT_EQ(editor.actions(), "Remove field: \"A\"|Remove field: \"B\"|Set \"ARTIST\" = \"c\"|");
    EXPECT_EQ(editor.previews(), "ARTIST = \"c\"|");
    EXPECT_EQ(script(), "ABA");
}

TEST_F(EditorTest, RunsTheScript) {
    const Editor editor = open_editor("b a");
    editor.click(run);
    EXPECT_EQ(editor.message(), "1001: No actions to perform.");
    EXPECT_EQ(host_.take_events(), "");

    editor.add("Remove all fields");
    tag_io_.carry_out_updates_late();
    QTest::keyClick(&editor.list(), Qt::Key_Return);
    EXPECT_EQ(host_.take_events(), "update of b a, window, flags 8, watched");
    EXPECT_FALSE(editor.window().isEnabled());
    editor.window().close();
    EXPECT_TRUE(editor.is_open()) << "not during the run";
    EXPECT_EQ(editor.name_list(), "[last used]|");
    EXPECT_EQ(script_library().scripts().front().actions.size(), 1U);
    tag_io_.carry_out_updates_late();
    EXPECT_TRUE(editor.window().isEnabled());
    EXPECT_EQ(test::tags_text(tag_io_.track("a").tags), "");
    EXPECT_EQ(editor.previews(), nothing) << "there is nothing left to remove";

    // It closes by itself when told so, and only when all went well.
    auto& box = editor.control<QCheckBox>(close_when_done);
    box.click();
    EXPECT_EQ(static_cast<ConfigInt32&>(configuration_variable(setting::close_when_done)).get().front(), 1);
    for (const std::uint32_t result : {update_result::aborted, update_result::completed_with_errors}) {
        tag_io_.result = result;
        editor.click(run);
        tag_io_.carry_out_updates_late();
        QTest::qWait(10);
        EXPECT_TRUE(editor.is_open() && editor.window().isEnabled()) << result;
    }
    tag_io_.result.reset();
    editor.click(run);
    EXPECT_EQ(editor.name_list(), "[last used]|");
    tag_io_.carry_out_updates_late();
    QTest::qWait(10);
    run_deleted();
    EXPECT_TRUE(editor.is_gone());
    EXPECT_TRUE(open_editor("a").control<QCheckBox>(close_when_done).isChecked());
}

TEST_F(EditorTest, ShowsWhatFilesHold) {
    test::FakeTrack& unread = tag_io_.track("d");
    unread.tags = test::tags("TITLE=[From the file]");
    tag_io_.track("broken").tags = test::tags("TITLE=[t]");
    save_script("[last used]", {{RemoveAllFields::kind, ""}});
    const Editor editor = open_editor("broken d a");
    EXPECT_EQ(editor.previews(), "No changes|No changes|ARTIST removed; TITLE removed|");
    QTest::qWait(50);
    EXPECT_EQ(editor.previews(), "No changes|TITLE removed|ARTIST removed; TITLE removed|");

    // Tags that change elsewhere show at once; those of other tracks do not matter.
    tag_io_.track("a").tags = test::tags("GENRE=[g]");
    unread.tags = test::tags("DATE=[1]");
    tag_io_.tell_changed("b c");
    QTest::qWait(50);
    EXPECT_EQ(editor.previews(), "No changes|TITLE removed|ARTIST removed; TITLE removed|");
    tag_io_.tell_changed("a b");
    QTest::qWait(50);
    EXPECT_EQ(editor.previews(), "No changes|DATE removed|GENRE removed|");
}

TEST_F(EditorTest, ShowsEachTrackBeforeAndAfter) {
    tag_io_.track("b").tags = test::tags("TITLE=[<v>] ARTIST=[1][2]");
    save_script("[last used]", {{SetValue::kind, "TITLE\n<v>"}});
    const Editor editor = open_editor("a b");
    const QAbstractItemModel* model = editor.control<QTableView>(track_list).model();
    const auto is_bold = [&](int row) {
        return model->index(row, 1).data(Qt::FontRole).value<QFont>().bold();
    };
    EXPECT_TRUE(is_bold(0));
    EXPECT_FALSE(is_bold(1));
    const std::string tip = model->index(0, 1).data(Qt::ToolTipRole).toString().toStdString();
    EXPECT_NE(tip.find("<b>TITLE</b></td><td>Song a</td><td>&lt;v&gt;</td>"), std::string::npos) << tip;
    EXPECT_EQ(tip.find("ARTIST"), std::string::npos);
    EXPECT_EQ(model->index(1, 1).data(Qt::ToolTipRole), "No changes");
    QTest::qWait(250);
    EXPECT_EQ(editor.control<QLabel>(change_count).text(), "1 of 2 changes");
    EXPECT_EQ(model->headerData(0, Qt::Horizontal), "Name");
    EXPECT_EQ(model->headerData(1, Qt::Horizontal), "Output preview");
}

TEST_F(EditorTest, SeveralStandBesideEachOther) {
    owner_->setGeometry(100, 100, 600, 500);
    const Editor first = open_editor("a");
    const Editor second = open_editor("b");
    EXPECT_GT(second.window().x(), first.window().x());
    EXPECT_GT(second.window().y(), first.window().y());
    EXPECT_EQ(second.window().x() - first.window().x(), second.window().y() - first.window().y());
    first.add("Remove all fields");
    EXPECT_EQ(second.actions(), "");
    EXPECT_EQ(tag_io_.listener_count(), 2U);
    first.window().resize(first.window().size() + QSize(40, 30));
    first.window().move(60, 80);
    const QRect place = first.window().geometry();
    QTest::keyClick(&first.window(), Qt::Key_Escape);
    run_deleted();
    EXPECT_TRUE(first.is_gone());
    EXPECT_EQ(tag_io_.listener_count(), 1U);
    second.click(close);
    run_deleted();
    EXPECT_TRUE(second.is_gone());

    // The last one that was closed is remembered, relative to the owner.
    const Editor third = open_editor("a");
    third.window().setGeometry(place);
    third.window().close();
    run_deleted();
    owner_->move(owner_->pos() + QPoint(20, 10));
    EXPECT_EQ(open_editor("a").window().geometry(), place.translated(20, 10));
}

TEST_F(EditorTest, SeveralStandBesideEachOtherOverAWindowThatFillsTheScreen) {
    owner_->showFullScreen(); // without a frame, which the others have
    QCoreApplication::processEvents();
    std::vector<QPoint> corners;
    for (int i = 0; i < 12; ++i) {
        const Editor editor = open_editor("a");
        QCoreApplication::processEvents();
        EXPECT_TRUE(owner_->screen()->availableGeometry().contains(editor.window().frameGeometry())) << i;
        corners.push_back(editor.window().pos());
        EXPECT_EQ(std::ranges::count(corners, corners.back()), 1) << i;
    }
}

TEST_F(EditorTest, KeepsToTheScreen) {
    const QRect screen = owner_->screen()->availableGeometry();
    static_cast<ConfigPlacement&>(configuration_variable(setting::editor_placement))
        .set({100, 100, 1 << 30, -(1 << 30), 96, 96});
    const Editor editor = open_editor("a");
    EXPECT_TRUE(screen.contains(editor.window().geometry()));
    EXPECT_EQ(editor.window().size(), editor.window().minimumSize());
}

TEST_F(EditorTest, GrowsWithItsWindow) {
    const Editor editor = open_editor("a");
    std::map<int, QRect> start;
    for (int id : {action_list, add, script_name, track_list, close_when_done, help, run, close})
        start[id] = editor.control(id).geometry();
    editor.window().resize(editor.window().size() + QSize(100, 100));
    QCoreApplication::processEvents();
    EXPECT_EQ(editor.control(action_list).geometry(), start[action_list].adjusted(0, 0, 0, 100));
    EXPECT_EQ(editor.control(add).geometry(), start[add].translated(0, 100));
    EXPECT_EQ(editor.control(script_name).geometry(), start[script_name].translated(0, 100));
    EXPECT_EQ(editor.control(track_list).geometry(), start[track_list].adjusted(0, 0, 100, 100));
    for (int id : {close_when_done, help, run, close})
        EXPECT_EQ(editor.control(id).geometry(), start[id].translated(100, 100)) << id;
}

TEST_F(EditorTest, GoesAtAnyMoment) {
    save_script("[last used]", {{SetValue::kind, "A\nv"}});
    for (const char* moment : {"reading", "editing", "running", "in a menu", "counting"}) {
        auto owner = std::make_unique<QWidget>();
        owner->show();
        for (int i = 0; i < 200; ++i)
            tag_io_.track("f" + std::to_string(i));
        std::string paths = "a ";
        for (int i = 0; i < 200; ++i)
            paths += "f" + std::to_string(i) + ' ';
        open_editor_window(tag_io_.tracks(paths), static_cast<QWidget*>(owner.get()));
        const Editor editor(owner->findChild<QDialog*>());
        const std::string_view now = moment;
        if (now == "editing") {
            editor.select(0);
            editor.open(0);
        } else if (now == "running") {
            tag_io_.carry_out_updates_late();
            editor.click(run);
        } else if (now == "in a menu") {
            editor.click(add);
        } else if (now == "counting") {
            QTest::qWait(160);
        }
        owner.reset();
        EXPECT_TRUE(editor.is_gone()) << moment;
        tag_io_.carry_out_updates_late();
        QTest::qWait(10);
        EXPECT_EQ(tag_io_.listener_count(), 0U);
    }
}

TEST_F(EditorTest, TakesADroppedScriptFile) {
    const test::TemporaryFolder folder;
    const Editor editor = open_editor("a");
    const auto drop = [&](const std::string& path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.setAccepted(false);
        QCoreApplication::sendEvent(&editor.window(), &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent dropped(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&editor.window(), &dropped);
        QTest::qWait(10);
        return true;
    };
    EXPECT_FALSE(drop("/tmp/song.mp3"));
    EXPECT_TRUE(drop(folder.path("missing.qvx")));
    EXPECT_NE(host_.take_events().find("showed Error: Error loading quorvex script ("), std::string::npos);
}

} // namespace
} // namespace quorvex
