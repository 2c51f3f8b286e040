#include "quorvex/output.h"
#include "quorvex/verbs.h"

#include "script/action_registry.h"
#include "vantaro/application/exit_status.h"

#include <algorithm>

namespace quorvex::command {

int kinds(bool json) {
    const std::vector<ActionMenuEntry> menu = action_menu();
    std::size_t width = 0;
    for (const ActionMenuEntry& entry : menu)
        width = std::max(width, entry.name.size());
    for (const ActionMenuEntry& entry : menu) {
        const std::string kind = to_text(entry.type->get_guid());
        if (json) {
            print_json({{"name", entry.name}, {"guid", kind}});
        } else {
            std::string name = vantaro::core::printable(entry.name);
            name.resize(width + 2, ' ');
            print_line(name.append(kind));
        }
    }
    return vantaro::core::exit_status::done;
}

} // namespace quorvex::command
