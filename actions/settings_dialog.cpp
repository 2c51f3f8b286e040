#include "actions/settings_dialog.h"

namespace quorvex {

namespace {

SettingsDialogOpener* current_opener = nullptr;

} // namespace

void set_settings_dialog_opener(SettingsDialogOpener* opener) {
    current_opener = opener;
}

void open_settings_dialog(Action& action, vantaro::WindowHandle parent, vantaro::CompletionNotify& done) {
    if (current_opener)
        current_opener(action, parent, done);
    else
        done.notify(0);
}

} // namespace quorvex
