// The commands that components offer for tracks: in menus, by keys, and what happens when one is chosen.
//
//     TrackCommands commands(host, list, loader, window, config_dir);
//     commands.fill(menu);                            // for the selected tracks
//
// Main thread.
#pragma once

#include "vantaro/desktop/command_menu.h"
#include "vantaro/desktop/track_list.h"
#include "vantaro/desktop/track_loader.h"

#include <QAction>
#include <QMainWindow>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vantaro::core {

class TrackCommands {
public:
    /// All outlive the object.
    TrackCommands(Host& host, TrackList& list, TrackLoader& loader, QMainWindow& window,
                  const std::string& config_dir);

    /// The window's own actions: keys that the user gives to a command are no longer theirs.
    void set_own_actions(const std::vector<QAction*>& actions);
    /// Adds the commands for the selected tracks.
    void fill(QMenu& menu);
    /// Makes the keys of the table work in the window, for the commands that there are now.
    void update_shortcuts();
    /// Lets the user choose keys.
    void edit_keys();

    /// Called after a command, also when it has failed. What it has opened may still be open.
    std::function<void()> on_executed;
    /// Takes a short text for the status bar.
    std::function<void(const QString& text)> on_hint;

private:
    struct OwnAction {
        QAction* action;
        QList<QKeySequence> keys;
    };

    std::vector<MenuCommand> commands_for(const std::vector<Track*>& tracks);
    void run_by_guid(const Guid& guid, const QString& name);
    void run(const MenuCommand& command, const std::vector<Track*>& tracks);
    void execute(const MenuCommand& command, const std::vector<Track*>& tracks);

    Host& host_;
    TrackList& list_;
    TrackLoader& loader_;
    QMainWindow& window_;
    ShortcutTable shortcuts_;
    std::vector<OwnAction> own_actions_;
    std::vector<std::unique_ptr<QAction>> key_actions_;
};

} // namespace vantaro::core
