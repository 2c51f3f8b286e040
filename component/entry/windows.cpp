// The component as hosts load it has windows: this hands their openers to what asks for them.

#include "entry/context_menu.h"
#include "ui/settings_dialog.h"
#include "ui/widgets/editor_window.h"
#include "ui/widgets/settings_window.h"

namespace quorvex {

namespace {

/// Constructed while the library is being loaded.
[[maybe_unused]] const struct Windows {
    Windows() {
        set_settings_dialog_opener(open_settings_window);
        set_editor_opener(open_editor_window);
    }
} windows;

} // namespace

} // namespace quorvex
