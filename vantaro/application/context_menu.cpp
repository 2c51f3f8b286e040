#include "vantaro/application/context_menu.h"

#include <algorithm>

namespace vantaro::core {

namespace {

/// Menus deeper than this are a component's mistake.
constexpr int deepest_menu = 16;

void add_commands(const Ref<ContextMenuNode>& node, const std::string& menu, const Guid& item_guid, int depth,
                  std::vector<MenuCommand>& commands) {
    StringSink name;
    std::uint32_t flags = 0;
    if (!node->get_display(name, flags) || depth > deepest_menu)
        return;
    const std::string path = menu.empty() ? name.text() : menu + '/' + name.text();
    if (const std::size_t count = node->child_count(); count > 0) {
        for (std::size_t i = 0; i < count; ++i)
            add_commands(Ref<ContextMenuNode>::adopt(node->child(i)), path, {}, depth + 1, commands);
        return;
    }
    StringSink description;
    node->get_description(description);
    const Guid own = node->get_guid();
    commands.push_back({path, description.take(), own == Guid{} ? item_guid : own, node});
}

} // namespace

std::vector<MenuCommand> context_menu(Host& host, const std::vector<TrackHandle*>& tracks,
                                      const Guid& caller) {
    std::vector<MenuCommand> commands;
    host.for_each_service<ContextMenuItem>([&](ContextMenuItem& item) {
        for (std::size_t i = 0; i < item.command_count(); ++i) {
            const std::string menu = text_of([&](TextSink& out) { item.get_default_path(i, out); });
            const auto node =
                Ref<ContextMenuNode>::adopt(item.create_node(i, tracks.data(), tracks.size(), caller));
            if (node)
                add_commands(node, menu, item.get_item_guid(i), 0, commands);
        }
    });
    return commands;
}

const MenuCommand* find_command(const std::vector<MenuCommand>& commands, const std::string& path_or_guid) {
    const auto guid = parse_guid(path_or_guid);
    const auto found = std::ranges::find_if(commands, [&](const MenuCommand& command) {
        return guid ? command.guid == *guid && *guid != Guid{} : command.path == path_or_guid;
    });
    return found == commands.end() ? nullptr : &*found;
}

} // namespace vantaro::core
