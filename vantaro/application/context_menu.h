// The context menu of tracks, as the registered items make it up.
//
//     const std::vector<MenuCommand> commands = context_menu(host, tracks, caller);
//     find_command(commands, "Tagging/Scripts/Tidy up")->node->execute(...);
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
    /// The menus that it lies in, from the outermost on. Names may hold any sign.
    std::vector<std::string> menus;
    std::string name;
    std::string description;
    /// By which the command is found without the menu. All zero when it has none.
    Guid guid;
    Ref<ContextMenuNode> node;
};

/// The menus and the name, joined by "/".
std::string path_of(const MenuCommand& command);

/// The commands for these tracks, in the order of the items and of the nodes in each. `caller` as
/// ContextMenuItem has it. What a component fails to offer is reported and left out.
std::vector<MenuCommand> context_menu(Host& host, const std::vector<TrackHandle*>& tracks,
                                      const Guid& caller);

/// The first command of that path, or of the GUID that the text is; nullptr when there is none.
const MenuCommand* find_command(const std::vector<MenuCommand>& commands, const std::string& path_or_guid);

} // namespace vantaro::core
