// The way from an action to its settings dialog. Windows need a widget library, which actions do not link:
// who has one hands the opener over when the component starts.
//
// Main thread only.
#pragma once

#include "script/action.h"

namespace quorvex {

/// Opens the dialog of `action` as Action::create_settings_dialog promises.
using SettingsDialogOpener = void(Action& action, vantaro::WindowHandle parent,
                                  vantaro::CompletionNotify& done);

void set_settings_dialog_opener(SettingsDialogOpener* opener);

/// Opens the dialog; without an opener there are no dialogs, and it counts as cancelled at once.
void open_settings_dialog(Action& action, vantaro::WindowHandle parent, vantaro::CompletionNotify& done);

} // namespace quorvex
