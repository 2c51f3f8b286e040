// The window of a settings dialog: made of what the kind of action declares, it fills its controls from the
// action, and ends with exactly one report.
//
//     set_settings_dialog_opener(open_settings_window);
//
// OK checks the input in the declared order; the first text that is rejected is told at its control, which
// gets the focus, and nothing is stored. Otherwise the settings are stored, `done` hears 1, and the window
// goes. Cancel, Escape and the close box: `done` hears 0. A window that goes with its owner reports nothing.
// While its owner is disabled, whoever turns to that is led to this window.
//
// Main thread.
#pragma once

#include "ui/settings_dialog.h"

namespace quorvex {

/// A SettingsDialogOpener. The window is owned by `parent` (a QWidget*, or nullptr), and deletes itself.
/// Throws: vantaro::exception_win32 when no window can be made, for want of a display.
void open_settings_window(const SettingsRequest& request, vantaro::WindowHandle parent,
                          vantaro::CompletionNotify& done);

} // namespace quorvex
