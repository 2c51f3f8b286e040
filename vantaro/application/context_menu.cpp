#include "vantaro/application/context_menu.h"

#include <algorithm>
#include <sstream>

namespace vantaro::core {

namespace {

/// Menus deeper than this are a component's mistake.
constexpr std::size_t deepest_menu = 16;

void add_commands(const Ref<ContextMenuNode>& node, std::vector<std::string> menus, const Guid& item_guid,
                  std::vector<MenuCommand>& commands) {
    StringSink name;
    std::uint32_t flags = 0;
    if (!node->get_display(name, flags) || menus.size() > deepest_menu)
        return;
    if (const std::size_t count = node->child_count(); count > 0) {
        menus.push_back(name.take());
        for (std::size_t i = 0; i < count; ++i)
            add_commands(Ref<ContextMenuNode>::adopt(node->child(i)), menus, {}, commands);
        return;
    }
    StringSink description;
    node->get_description(description);
    const Guid own = node->get_guid();
    commands.push_back(
        {std::move(menus), name.take(), description.take(), own == Guid{} ? item_guid : own, node});
}

/// The menus of a default path, "Tagging/Numbers".
std::vector<std::string> split(const std::string& path) {
    std::vector<std::string> names;
    std::istringstream rest(path);
    for (std::string name; std::getline(rest, name, '/');)
        if (!name.empty())
            names.push_back(name);
    return names;
}

} // namespace

std::vector<MenuCommand> context_menu(Host& host, const std::vector<TrackHandle*>& tracks,
                                      const Guid& caller) {
    std::vector<MenuCommand> commands;
    const auto add_item = [&](ContextMenuItem& item) {
        for (std::size_t i = 0; i < item.command_count(); ++i) {
            const std::string menu = text_of([&](TextSink& out) { item.get_default_path(i, out); });
            const auto node =
                Ref<ContextMenuNode>::adopt(item.create_node(i, tracks.data(), tracks.size(), caller));
            if (node)
                add_commands(node, split(menu), item.get_item_guid(i), commands);
        }
    };
    host.for_each_service<ContextMenuItem>([&](ContextMenuItem& item) {
        try {
            add_item(item);
        } catch (const std::exception& error) {
            host.report(std::string("A command of the context menu is left out: ") + error.what());
        }
    });
    return commands;
}

std::string path_of(const MenuCommand& command) {
    std::string path;
    for (const std::string& menu : command.menus)
        path += menu + '/';
    return path + command.name;
}

const MenuCommand* find_command(const std::vector<MenuCommand>& commands, const std::string& path_or_guid) {
    const auto guid = parse_guid(path_or_guid);
    const auto found = std::ranges::find_if(commands, [&](const MenuCommand& command) {
        return guid ? command.guid == *guid && *guid != Guid{} : path_of(command) == path_or_guid;
    });
    return found == commands.end() ? nullptr : &*found;
}

} // namespace vantaro::core
