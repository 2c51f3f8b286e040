#include "ui/widgets/dialog_services.h"

#include "host/access.h"

#include <utility>

namespace quorvex {

using namespace vantaro;

DialogServices::DialogServices() {
    if (services_available() && service_count(DialogDecorationHook::class_guid) == 1)
        decoration_ = Ref<DialogDecoration>::adopt(only_service<DialogDecorationHook>()->create());
}

DialogServices::~DialogServices() {
    leave();
}

void DialogServices::enter(QWidget& window) {
    leave();
    window_ = &window;
    for_each_service<ModelessDialogRegistry>(
        [&](ModelessDialogRegistry& registry) { registry.register_dialog(&window); });
    if (decoration_) {
        decoration_->add_dialog(&window);
        decoration_->add_controls(&window);
    }
}

void DialogServices::leave() {
    QWidget* window = std::exchange(window_, nullptr);
    if (window)
        for_each_service<ModelessDialogRegistry>(
            [&](ModelessDialogRegistry& registry) { registry.unregister_dialog(window); });
}

} // namespace quorvex
