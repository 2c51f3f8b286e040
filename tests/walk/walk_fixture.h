// The program as people use it: the main window with the real component, on a copy of the sample album.
//
//     TEST_F(Road, RunsAScript) {
//         add_files(album_);
//         select_all();
//         const Editor editor = open_editor();
//         ...
//     }
//
// Components cannot be loaded twice, so each test wants a process of its own, as ctest gives it.
#pragma once

#include "tests/support/temporary_folder.h"
#include "tests/ui/editor_driver.h"
#include "tests/windows/window_access.h"
#include "vantaro/desktop/window_host.h"
#include "vantaro/tags/tag_file.h"

#include <gtest/gtest.h>

#include <QContextMenuEvent>
#include <QFileDialog>
#include <QMessageBox>
#include <QProgressDialog>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace vantaro::test {

using namespace vantaro::core;
using quorvex::test::Dialog;
using quorvex::test::Editor;

class Walk : public testing::Test {
protected:
    Walk() {
        std::filesystem::copy(QUORVEX_SAMPLES "/album", album_);
        window().show();
        activate(window());
    }

    MainWindow& window() { return program_.window(); }
    Host& host() { return program_.host(); }

    static bool wait_for(const std::function<bool()>& is_so) { return QTest::qWaitFor(is_so, 20000); }
    static void activate(QWidget& wanted) {
        wanted.activateWindow();
        ASSERT_TRUE(wait_for([&] { return wanted.isActiveWindow(); }));
    }
    bool wait_until_idle() {
        return wait_for([this] {
            return host().tag_io().is_idle() && !window().loader().is_busy()
                   && !window().findChild<QProgressDialog*>();
        });
    }

    void add_files(const std::string& location) {
        window().add({location});
        ASSERT_TRUE(wait_until_idle());
    }
    void select_all() {
        window().list().setFocus();
        QTest::keySequence(&window().list(), QKeySequence::SelectAll);
    }
    void select_rows(int from, int count) {
        TrackList& list = window().list();
        const QModelIndex first = window().model().index(from, 0);
        const QModelIndex last = window().model().index(from + count - 1, 0);
        list.selectionModel()->select(QItemSelection(first, last),
                                      QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }

    /// The entries of the selected tracks' menu by their paths, "Tagging/Scripts/Tidy up"; the menu is open.
    std::map<std::string, QAction*> open_track_menu() {
        TrackList& list = window().list();
        const QPoint place = list.viewport()->rect().center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, list.viewport()->mapToGlobal(place));
        QApplication::sendEvent(list.viewport(), &event);
        auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            throw std::runtime_error("no menu");
        std::map<std::string, QAction*> entries;
        collect(*menu, "", entries);
        return entries;
    }
    void choose_in_track_menu(const std::string& path) {
        QAction* entry = open_track_menu().at(path);
        QApplication::activePopupWidget()->close();
        entry->trigger();
    }
    /// "Manage scripts" on what is selected.
    Editor open_editor() {
        choose_in_track_menu("Tagging/Manage scripts");
        if (!wait_for([this] { return host().tag_io().is_idle(); }))
            throw std::runtime_error("the tags are not read");
        QDialog* const editor = editors().back();
        activate(*editor);
        return Editor(editor);
    }
    /// Adds an action with these settings.
    static void add(const Editor& editor, const char* kind,
                    const std::vector<std::pair<int, std::string>>& typed) {
        editor.add(kind);
        const Dialog dialog = editor.dialog();
        for (const auto& [control, text] : typed)
            dialog.type(control, text);
        dialog.press_ok();
        EXPECT_FALSE(dialog.is_open()) << kind << ": " << dialog.message();
    }
    /// The open editors, the oldest first.
    std::vector<QDialog*> editors() {
        std::vector<QDialog*> found;
        for (QDialog* dialog : window().findChildren<QDialog*>(Qt::FindDirectChildrenOnly))
            if (dialog->windowTitle() == "Quorvex" && dialog->isVisible())
                found.push_back(dialog);
        return found;
    }

    /// Whether a message is shown that has the text in it.
    static bool shows_message(const QString& text) {
        return std::ranges::any_of(QApplication::topLevelWidgets(), [&](const QWidget* shown) {
            const auto* said = shown->findChild<QPlainTextEdit*>();
            return shown->isVisible() && said && said->toPlainText().contains(text);
        });
    }
    std::string listed_title(int row) {
        const TrackModel& model = window().model();
        return model.data(model.index(row, static_cast<int>(Column::title)), Qt::DisplayRole)
            .toString()
            .toStdString();
    }

    /// Answers the next question, and notes it in `asked_`.
    void answer_next(QMessageBox::StandardButton button) {
        with_modal([this, button](QWidget& modal) {
            auto& box = dynamic_cast<QMessageBox&>(modal);
            asked_ += box.windowTitle().toStdString() + ": " + box.text().toStdString() + '|';
            QTest::mouseClick(box.button(button), Qt::LeftButton);
        });
    }
    void choose_file_next(const std::string& path) {
        with_modal([path](QWidget& modal) {
            auto& dialog = dynamic_cast<QFileDialog&>(modal);
            const std::filesystem::path file = path;
            dialog.setDirectory(QString::fromStdString(file.parent_path()));
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(file.filename()));
            QMetaObject::invokeMethod(&dialog, "accept");
        });
    }
    std::string take_asked() { return std::exchange(asked_, {}); }

    /// A field of every file of the album in the order of their names, values joined by ";", "|" behind each
    /// file; read from the files.
    std::string in_files(const char* field) const {
        std::string text;
        for (const std::filesystem::path& path : files()) {
            TrackInfoRecord info;
            read_tags(path, info);
            const std::size_t index = info.find_field(field);
            for (std::size_t value = 0; index != no_field && value < info.value_count(index); ++value)
                text += (value == 0 ? "" : ";") + std::string(info.value(index, value));
            text += '|';
        }
        return text;
    }
    std::vector<std::filesystem::path> files() const {
        std::vector<std::filesystem::path> found;
        for (const auto& entry : std::filesystem::directory_iterator(album_))
            if (entry.path().extension() != ".m3u8" && entry.path().extension() != ".cue")
                found.push_back(entry.path());
        std::ranges::sort(found);
        return found;
    }
    /// What the component's settings are on the disk.
    std::string stored_settings() const {
        std::string all;
        if (std::filesystem::exists(folder_.path("config")))
            for (const auto& entry : std::filesystem::directory_iterator(folder_.path("config")))
                all += folder_.read("config/" + entry.path().filename().string());
        return all;
    }
    /// Of every file of the album.
    std::vector<std::string> bytes() const {
        std::vector<std::string> all;
        for (const std::filesystem::path& path : files())
            all.push_back(folder_.read("album/" + path.filename().string()));
        return all;
    }

    const TemporaryFolder folder_;
    const std::string album_ = folder_.path("album");

private:
    static void collect(const QMenu& menu, const std::string& above,
                        std::map<std::string, QAction*>& entries) {
        for (QAction* action : menu.actions()) {
            const QString name = action->text().section('\t', 0, 0).remove('&');
            const std::string path = above + name.toStdString();
            if (action->menu())
                collect(*action->menu(), path + '/', entries);
            else
                entries[path] = action;
        }
    }
    HostSetup setup() const {
        HostSetup setup;
        setup.config_dir = folder_.path("config");
        setup.state_dir = folder_.path("state");
        setup.component_dir = QUORVEX_COMPONENTS;
        setup.jobs = 2;
        return setup;
    }

    Interrupt interrupt_;
    WindowHost program_{setup(), interrupt_};
    std::string asked_;
};

} // namespace vantaro::test
