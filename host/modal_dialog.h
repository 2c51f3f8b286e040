// The guard of modal dialogs: one at a time, for all components together.
//
// Main thread only.
#pragma once

namespace quorvex {

/// Whether a new modal dialog may be opened now. Without windows: always.
bool ModalDialog_CanCreateNew();
/// Draws the person's attention to the modal dialog that is open.
void ModalDialog_PokeExisting();

} // namespace quorvex
