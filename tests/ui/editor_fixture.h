// The editor as a real window, over tracks and a host made of memory.
//
//     Editor editor = open_editor("a b c");
//     editor.add("Remove all fields");
//     EXPECT_EQ(editor.previews(), "TITLE removed|TITLE removed|TITLE removed|");
#pragma once

#include "engine/background_threads.h"
#include "host/api/input.h"
#include "script/script_library.h"
#include "tests/ui/dialogs_fixture.h"
#include "ui/editor_template.h"
#include "ui/widgets/editor_window.h"
#include "vantaro/services/main_thread.h"

#include <QListWidget>
#include <QMenu>
#include <QTableView>

namespace quorvex::test {

/// Reads what the tracks of the fake host have.
class FakeInput final : public vantaro::HeapService<vantaro::InputEntry> {
public:
    explicit FakeInput(FakeTagIO& tag_io) : tag_io_(tag_io) {}
    bool reads(const char*) override { return true; }
    vantaro::InputInfoReader* open_for_info_read(vantaro::File*, const char* path,
                                                 vantaro::AbortFlag&) override {
        const std::string name = path;
        if (name.starts_with("broken"))
            throw vantaro_io::exception_io_data();
        class Reader final : public vantaro::HeapService<vantaro::InputInfoReader> {
        public:
            explicit Reader(const vantaro::TrackInfoRecord& tags) : tags_(tags) {}
            vantaro::FileStats get_file_stats(vantaro::AbortFlag&) override { return {}; }
            void get_info(std::uint32_t, vantaro::TrackInfo& info, vantaro::AbortFlag&) override {
                info.copy(tags_);
            }

        private:
            const vantaro::TrackInfoRecord tags_;
        };
        return vantaro::make_service<Reader>(tag_io_.track(name).tags).detach();
    }

private:
    FakeTagIO& tag_io_;
};

/// One open editor.
class Editor : public Dialog {
public:
    using Dialog::Dialog;

    void click(int id) const { control<QAbstractButton>(id).click(); }
    QListWidget& list() const { return control<QListWidget>(editor_control::action_list); }
    /// The rows of the action list, "|" behind each; the selected one has a star.
    std::string actions() const {
        std::string text;
        for (int row = 0; row < list().count(); ++row)
            text +=
                (list().item(row)->isSelected() ? "*" : "") + list().item(row)->text().toStdString() + '|';
        return text;
    }
    /// A column of the track list, "|" behind each row.
    std::string column(int column) const {
        const QAbstractItemModel* model = control<QTableView>(editor_control::track_list).model();
        std::string text;
        for (int row = 0; row < model->rowCount(); ++row)
            text += model->index(row, column).data().toString().toStdString() + '|';
        return text;
    }
    std::string previews() const { return column(1); }
    /// Picks a kind from the menu of the Add button. Returns the items, "|" behind each.
    std::string add(const std::string& kind) const {
        click(editor_control::add);
        auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            throw std::invalid_argument("no menu");
        std::string items;
        QAction* picked = nullptr;
        for (QAction* action : menu->actions()) {
            const std::string name = action->text().remove('&').toStdString();
            items += name + '|';
            if (name == kind)
                picked = action;
        }
        if (picked)
            picked->trigger();
        menu->close();
        return items;
    }
    /// The settings dialog that is open.
    Dialog dialog() const {
        for (QDialog* child : window().findChildren<QDialog*>(Qt::FindDirectChildrenOnly))
            if (child->isVisible())
                return Dialog(child);
        throw std::invalid_argument("no settings dialog");
    }
    void select(int row) const { list().setCurrentRow(row); }
    /// Double-clicks the row.
    void open(int row) const { emit list().itemDoubleClicked(list().item(row)); }
    std::string name_list() const {
        const auto& box = control<QComboBox>(editor_control::script_name);
        std::string text;
        for (int i = 0; i < box.count(); ++i)
            text += box.itemText(i).toStdString() + '|';
        return text;
    }
};

class Editors : public Dialogs {
protected:
    Editors() {
        host_.offer<vantaro::MainThreadQueue>(Ref<vantaro::MainThreadQueue>(&main_thread_));
        host_.offer<vantaro::InputEntry>(vantaro::make_service<FakeInput>(tag_io_));
        for (const char* path : {"a", "b", "c"}) {
            FakeTrack& track = tag_io_.track(path);
            track.tags = tags("TITLE=[Song " + std::string(path) + "] ARTIST=[x]");
            track.is_held = true;
        }
    }
    ~Editors() override {
        owner_.reset();
        run_deleted();
        join_background_threads();
        QCoreApplication::processEvents();
        host_.withdraw_all(); // it would outlive the queue
    }

    Editor open_editor(const std::string& paths) {
        open_editor_window(tag_io_.tracks(paths), static_cast<QWidget*>(owner_.get()));
        const auto windows = owner_->findChildren<QDialog*>(Qt::FindDirectChildrenOnly);
        QApplication::setActiveWindow(windows.back());
        return Editor(windows.back());
    }
    /// Saves a script of these actions.
    void save_script(const std::string& name, const std::vector<StoredAction>& actions) {
        script_library().store_script(name, actions);
    }

    vantaro::core::MainThread main_thread_{[this](const std::string& line) { host_.note(line); }};
};

} // namespace quorvex::test
