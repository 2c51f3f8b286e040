// The window in which commands get their keys.
//
//     if (edit_shortcuts(table, context_menu(host, {}, menu_caller::command_list), this)) table.save();
//
// Main thread.
#pragma once

#include "vantaro/application/context_menu.h"
#include "vantaro/windows/shortcuts.h"

#include <QWidget>

#include <vector>

namespace vantaro::core {

/// Shows the commands that have a GUID, and returns when the window is closed.
/// @returns whether it ended with OK: the table has the new keys then, otherwise it is as it was. Nothing is
/// stored.
bool edit_shortcuts(ShortcutTable& table, const std::vector<MenuCommand>& commands, QWidget* parent);

} // namespace vantaro::core
