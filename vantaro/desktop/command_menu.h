// The commands for tracks as menus and submenus.
//
//     fill_menu(menu, context_menu(host, tracks, {}), shortcuts, [&](const MenuCommand& command) { ... });
//
// Main thread.
#pragma once

#include "vantaro/application/context_menu.h"
#include "vantaro/windows/shortcuts.h"

#include <QMenu>

#include <functional>
#include <vector>

namespace vantaro::core {

/// Adds the commands below their submenus, each with the keys that it has in the table. They are
/// shown only: carrying out a command by its keys is the window's business.
void fill_menu(QMenu& menu, const std::vector<MenuCommand>& commands, const ShortcutTable& shortcuts,
               const std::function<void(const MenuCommand& command)>& on_chosen);

} // namespace vantaro::core
