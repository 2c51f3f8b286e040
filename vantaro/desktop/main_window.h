// The host's window: a list of tracks and everything that can be done with them.
//
//     MainWindow window(host, {&console, &question, &dialogs, config_dir});
//     window.on_closed = [] { QCoreApplication::exit(0); };
//     window.show();
//     window.add(paths);
//
// Main thread.
#pragma once

#include "vantaro/application/host.h"
#include "vantaro/desktop/disk_changes.h"
#include "vantaro/desktop/run_undo.h"
#include "vantaro/desktop/track_commands.h"
#include "vantaro/desktop/track_list.h"
#include "vantaro/desktop/track_loader.h"
#include "vantaro/desktop/track_model.h"
#include "vantaro/desktop/window_memory.h"
#include "vantaro/windows/console_panel.h"
#include "vantaro/windows/dialog_registry.h"

#include <QFileSystemWatcher>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QTimer>
#include <QToolButton>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vantaro::core {

/// What the window works with; all outlive it.
struct WindowSetup {
    PanelConsole& console;
    PopupQuestion& question;
    /// The components' windows, which close with the main window.
    DialogRegistry& dialogs;
    /// Where configurations are stored, and "window.ini" with them.
    std::string config_dir;
};

class MainWindow final : public QMainWindow, private TagChangeListener {
public:
    /// `host`, whose components are loaded, outlives the window.
    MainWindow(Host& host, const WindowSetup& setup);
    ~MainWindow() override;

    /// Adds files, folders, playlists and "file://" URLs to the list.
    void add(std::vector<std::string> locations);
    /// The watcher of an update that a component starts (HostSetup::make_watcher).
    std::unique_ptr<UpdateWatcher> watch(std::size_t total, QWidget* parent);

    /// Takes the newest run back, after a question.
    void undo_last_run();
    /// Closes without asking anything: updates end between two files.
    void close_at_once();

    /// Called when the window has closed. Updates may still be ending then (Host::wait_until_idle).
    std::function<void()> on_closed;

    TrackModel& model() { return model_; }
    TrackList& list() { return *list_; }
    TrackLoader& loader() { return loader_; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // In milliseconds.
    static constexpr int hint_duration = 8000;
    static constexpr int outcome_duration = 30'000;

    void tags_changed(TrackHandle* const* tracks, std::size_t count) override;

    void make_menus();
    void make_status_bar();
    void fill_columns_menu(QMenu& menu);
    void show_context_menu(const QPoint& place);

    void choose_files();
    void choose_folder();
    void remove_selected();
    void clear_list();
    void open_folder();
    void show_about();
    void show_preferences_window();

    void show_progress();
    void show_selection();
    void look_at_files();
    QString tell_outcome(const UpdateReport& report) const;
    void end_undo(const UndoOutcome& outcome);
    bool may_stop_updates();
    bool close_dialogs();
    bool may_lose_settings();
    bool ask(const QString& title, const QString& text, std::uint32_t default_button);
    void shut_down();
    void save_configurations();

    Host& host_;
    const WindowSetup setup_;
    const WindowMemory memory_;
    TrackModel model_;
    TrackList* const list_;
    TrackLoader loader_;
    TrackCommands commands_;
    DiskChanges disk_changes_;
    /// How many updates that components have started, and undos, are under way or wait.
    const std::shared_ptr<int> updates_ = std::make_shared<int>(0);
    bool is_closing_ = false;
    bool is_asking_ = false;
    bool has_told_of_settings_ = false;
    std::vector<QAction*> selection_actions_; // make sense with selected rows only
    QAction* clear_action_ = nullptr;
    QAction* undo_action_ = nullptr;
    QLabel* summary_ = nullptr;
    QLabel* progress_text_ = nullptr;
    QProgressBar* progress_bar_ = nullptr;
    QToolButton* cancel_button_ = nullptr;
    QTimer summary_timer_;
    QTimer save_timer_;
    QFileSystemWatcher config_watcher_;
};

} // namespace vantaro::core
