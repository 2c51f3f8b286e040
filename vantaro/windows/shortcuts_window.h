// The window in which commands get their keys.
//
//     if (edit_shortcuts(table, context_menu(host, {}, menu_caller::command_list), own, this)) table.save();
//
// Main thread.
#pragma once

#include "vantaro/application/context_menu.h"
#include "vantaro/windows/shortcuts.h"

#include <QWidget>

#include <vector>

namespace vantaro::core {

/// Keys that the main window uses for itself as long as no command has them.
struct WindowKeys {
    QString name;
    QKeySequence keys;
};

/// Shows the commands that have a GUID, and returns when the window is closed. Who gives a command keys of
/// `own` is told so first.
/// @returns whether it ended with OK: the table has the new keys then, otherwise it is as it was. Nothing is
/// stored.
bool edit_shortcuts(ShortcutTable& table, const std::vector<MenuCommand>& commands,
                    const std::vector<WindowKeys>& own, QWidget* parent);

} // namespace vantaro::core
