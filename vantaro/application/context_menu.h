// The context menu of tracks, as the registered items make it up.
//
//     ContextMenu menu(host, tracks, caller);
//     for (const MenuCommand& command : menu.commands()) ...
//     menu.find("Tagging/Scripts/Tidy up")->node->execute(...)
//
// Main thread only.
#pragma once

#include "host/api/registered_services.h"
#include "vantaro/application/host.h"

#include <string>
#include <vector>

namespace vantaro::core {

/// One command of the menu.
struct MenuCommand {
    /// Menu names from the outermost on, joined by "/".
    std::string path;
    std::string description;
    /// By which the command is found without the menu. All zero when it has none.
    Guid guid;
    Ref<ContextMenuNode> node;
};

/// The commands for these tracks, in the order of the items and of the nodes in each. `caller` as
/// ContextMenuItem has it.
std::vector<MenuCommand> context_menu(Host& host, const std::vector<TrackHandle*>& tracks,
                                      const Guid& caller);

/// The command of that path, or of the GUID that the text is; nullptr when there is none.
const MenuCommand* find_command(const std::vector<MenuCommand>& commands, const std::string& path_or_guid);

} // namespace vantaro::core
