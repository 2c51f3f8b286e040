// Where the editor stands and how large it is, from one opening to the next.
//
//     restore_placement(window, owner);
//     ...
//     save_placement(window, owner);
//
// Kept in the configuration as setting::editor_placement, in device-independent pixels, relative to the
// owner, with the logical DPI that they were saved at. Where the desktop lets no window place itself, only
// the size comes back. Main thread.
#pragma once

#include <QWidget>

namespace quorvex {

/// Gives the window the size and place that were stored; else its own size, in the middle of the owner (or of
/// the screen without one). It does not stand exactly on another window, and stays on the screen.
void restore_placement(QWidget& window, const QWidget* owner);
void save_placement(const QWidget& window, const QWidget* owner);

} // namespace quorvex
