#include "vantaro/windows/dialog_registry.h"

#include <algorithm>

namespace vantaro::core {

void DialogRegistry::register_dialog(WindowHandle window) {
    std::erase_if(windows_, [](const auto& known) { return known.isNull(); });
    const bool is_known =
        std::ranges::any_of(windows_, [&](const auto& known) { return known.data() == window; });
    if (window && !is_known)
        windows_.emplace_back(static_cast<QWidget*>(window));
}

void DialogRegistry::unregister_dialog(WindowHandle window) {
    std::erase_if(windows_, [&](const auto& known) { return known.isNull() || known.data() == window; });
}

std::vector<QPointer<QWidget>> DialogRegistry::windows() const {
    std::vector<QPointer<QWidget>> open = windows_;
    std::erase_if(open, [](const auto& window) { return window.isNull(); });
    return open;
}

} // namespace vantaro::core
