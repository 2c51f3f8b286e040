// The registered advanced preferences, in the order in which a tree shows them.
//
//     const AdvancedNode tools = advanced_tree(services);
//     for (const AdvancedNode& node : tools.children) ...
//
// Main thread.
#pragma once

#include "host/api/registered_services.h"

#include <string>
#include <vector>

namespace vantaro::core {

struct AdvancedNode {
    std::string name;
    /// The entry; empty for a branch.
    Ref<AdvancedPreferenceText> text;
    bool is_integer = false;
    std::vector<AdvancedNode> children;
};

/// The host's own branch "Tools", with everything below it: by sort priority, then by name. What has a parent
/// that is not there, or that is no branch, or that it is itself above, stands under "Tools".
AdvancedNode advanced_tree(const std::vector<Ref<AdvancedPreference>>& services);

} // namespace vantaro::core
