// Every window and menu of the program: reached by letters that lead to one place, and called by its name.

#include "tests/ui/access_faults.h"
#include "tests/walk/walk_fixture.h"
#include "vantaro/windows/update_report_window.h"
#include "vantaro/windows/update_window.h"
#include "vantaro/windows/window_question.h"

#include <QDockWidget>
#include <QHeaderView>
#include <QTreeWidget>

namespace vantaro::test {
namespace {

using quorvex::test::access_faults;

class Access : public Walk {
protected:
    /// The window's own action of that text.
    QAction& action(const QString& text) {
        for (QAction* found : window().findChildren<QAction*>())
            if (found->text() == text)
                return *found;
        throw std::runtime_error("no action " + text.toStdString());
    }
    /// Asks for the widget's context menu; what is wrong in it.
    static std::string faults_in_menu_of(QWidget& widget, const QPoint& place) {
        std::string faults = "no menu";
        QTimer::singleShot(0, [&] {
            if (auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget())) {
                faults = access_faults(*menu);
                menu->close();
            }
        });
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, widget.mapToGlobal(place));
        QApplication::sendEvent(&widget, &event);
        QTest::qWait(10);
        return faults;
    }
    /// Of the modal window that the action opens, with each of its tabs.
    std::string faults_behind(const QString& text, const std::function<void(QWidget&)>& look = {}) {
        std::string faults = "no window";
        with_modal([&](QWidget& modal) {
            faults = access_faults(modal);
            if (const auto* tabs = modal.findChild<QTabWidget*>())
                for (int i = 1; i < tabs->count(); ++i) {
                    modal.findChild<QTabWidget*>()->setCurrentIndex(i);
                    faults += access_faults(modal);
                }
            if (look)
                look(modal);
            modal.close();
        });
        action(text).trigger();
        QTest::qWait(10);
        return faults;
    }
};

TEST_F(Access, MainWindowAndItsMenus) {
    add_files(album_);
    select_all();
    window().findChild<QDockWidget*>("console")->show();
    EXPECT_EQ(access_faults(window()), "");
    for (QAction* entry : window().menuBar()->actions()) {
        emit entry->menu()->aboutToShow();
        for (QAction* inner : entry->menu()->actions())
            if (inner->menu())
                emit inner->menu()->aboutToShow();
        EXPECT_FALSE(entry->menu()->isEmpty());
        EXPECT_EQ(access_faults(*entry->menu()), "") << entry->text().toStdString();
    }
    TrackList& list = window().list();
    EXPECT_EQ(faults_in_menu_of(*list.viewport(), list.viewport()->rect().center()), "");
    EXPECT_EQ(faults_in_menu_of(*list.header()->viewport(), QPoint(5, 5)), "");
    auto& console = *window().findChild<QPlainTextEdit*>();
    EXPECT_EQ(faults_in_menu_of(*console.viewport(), QPoint(5, 5)), "");
}

TEST_F(Access, WindowsOfTheHost) {
    EXPECT_EQ(faults_behind(
                  "&Preferences…",
                  [](QWidget& modal) {
                      auto& tree = child<QTreeWidget>(modal);
                      QTreeWidgetItem* entry =
                          *QTreeWidgetItemIterator(&tree, QTreeWidgetItemIterator::Editable);
                      ASSERT_TRUE(entry);
                      tree.scrollToItem(entry);
                      tree.editItem(entry, 0);
                      EXPECT_EQ(access_faults(modal), "") << "while a value is typed";
                      EXPECT_EQ(faults_in_menu_of(*tree.viewport(), tree.visualItemRect(entry).center()), "");
                  }),
              "");
    EXPECT_EQ(faults_behind("&Keyboard shortcuts…"), "");
    action("&About Vantaro").trigger();
    ASSERT_TRUE(find_window("About Vantaro"));
    EXPECT_EQ(access_faults(*find_window("About Vantaro")), "");

    const auto watcher = make_update_window(&window(), 3);
    ASSERT_TRUE(wait_for([] { return find_window("Updating tags") != nullptr; }));
    EXPECT_EQ(access_faults(*find_window("Updating tags")), "");
    UpdateReport report;
    report.total = report.failed = 1;
    show_update_report(report, "updated", {{"/music/a.flac", "Access denied"}}, &window());
    EXPECT_EQ(access_faults(*find_window("Files That Failed")), "");
    WindowMessage message;
    message.set_parent(&window());
    message.show("text", 4, "A message", popup_icon::warning);
    EXPECT_EQ(access_faults(*find_window("A message")), "");

    std::string faults = "no window";
    with_modal([&](QWidget& modal) {
        faults = access_faults(modal);
        modal.close();
    });
    PopupQuestion::Request request;
    request.title = "A question";
    request.message = "Yes?";
    request.buttons = button::yes | button::no | button::cancel;
    host().for_each_service<PopupQuestion>([&](PopupQuestion& question) { question.ask(request); });
    EXPECT_EQ(faults, "");
}

TEST_F(Access, EditorAndEverySettingsDialog) {
    add_files(album_);
    select_all();
    const Editor editor = open_editor();
    EXPECT_EQ(access_faults(editor.window()), "");
    std::string add_menu = "no menu";
    editor.click(quorvex::editor_control::add);
    if (const auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget()))
        add_menu = access_faults(*menu);
    QApplication::activePopupWidget()->close();
    EXPECT_EQ(add_menu, "");

    const QStringList kinds = QString::fromStdString(editor.add("")).split('|', Qt::SkipEmptyParts);
    int dialogs = 0;
    for (const QString& kind : kinds) {
        editor.add(kind.toStdString());
        if (editor.window().isEnabled())
            continue; // it has no settings
        ++dialogs;
        const Dialog dialog = editor.dialog();
        EXPECT_EQ(access_faults(dialog.window()), "") << kind.toStdString();
        for (QComboBox* box : dialog.window().findChildren<QComboBox*>())
            EXPECT_EQ(faults_in_menu_of(*box, box->rect().center()), "");
        for (QLineEdit* box : dialog.window().findChildren<QLineEdit*>(Qt::FindDirectChildrenOnly))
            EXPECT_EQ(faults_in_menu_of(*box, box->rect().center()), "");
        dialog.press_cancel();
        ASSERT_TRUE(wait_for([&] { return dialog.is_gone(); }));
    }
    EXPECT_GE(dialogs, 13);
}

} // namespace
} // namespace vantaro::test
