#include "vantaro/windows/advanced_tree.h"

#include <algorithm>
#include <map>

namespace vantaro::core {

namespace {

struct Item {
    AdvancedNode node;
    Guid id;
    Guid parent;
    double priority = 0;
};

Item item_of(AdvancedPreference& service) {
    Item item;
    item.node.name = text_of([&](TextSink& out) { service.get_name(out); });
    item.node.text = query_interface<AdvancedPreferenceText>(service);
    if (const auto typed = query_interface<AdvancedPreferenceTypedText>(service))
        item.node.is_integer = typed->is_integer();
    item.id = service.get_guid();
    item.parent = service.get_parent();
    item.priority = service.get_sort_priority();
    return item;
}

/// Whether the branch `id` hangs together with the root, by way of branches that exist.
bool reaches_root(Guid id, const std::map<Guid, Guid>& parents) {
    // No chain is longer than there are branches, unless it runs in a circle.
    for (std::size_t steps = 0; steps <= parents.size(); ++steps) {
        const auto found = parents.find(id);
        if (id == advanced_preferences_root || found == parents.end())
            return id == advanced_preferences_root;
        id = found->second;
    }
    return false;
}

void add_children(AdvancedNode& branch, const Guid& id, const std::vector<Item>& items) {
    for (const Item& item : items) {
        if (item.parent != id)
            continue;
        AdvancedNode& child = branch.children.emplace_back(item.node);
        if (!child.text)
            add_children(child, item.id, items);
    }
}

} // namespace

AdvancedNode advanced_tree(const std::vector<Ref<AdvancedPreference>>& services) {
    std::vector<Item> items;
    std::map<Guid, Guid> parents; // of the branches
    for (const Ref<AdvancedPreference>& service : services) {
        Item item = item_of(*service);
        if (item.id == advanced_preferences_root)
            continue;
        // Of two branches with one GUID, the first one has the name and the place.
        if (item.node.text || parents.emplace(item.id, item.parent).second)
            items.push_back(std::move(item));
    }
    for (Item& item : items) {
        if (reaches_root(item.parent, parents))
            continue;
        item.parent = advanced_preferences_root;
        if (!item.node.text)
            parents[item.id] = advanced_preferences_root;
    }
    std::ranges::stable_sort(items, [](const Item& a, const Item& b) {
        return a.priority != b.priority ? a.priority < b.priority : a.node.name < b.node.name;
    });
    AdvancedNode root{"Tools", {}, false, {}};
    add_children(root, advanced_preferences_root, items);
    return root;
}

} // namespace vantaro::core
