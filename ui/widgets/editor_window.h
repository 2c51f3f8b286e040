// The editor: the window in which a script is built for some tracks, seen at work on each of them, kept under
// a name, and run.
//
//     set_editor_opener(open_editor_window);
//
// Every call opens one more; they share only what is stored. Main thread.
#pragma once

#include "engine/run_index.h"

namespace quorvex {

/// An EditorOpener. The window is owned by `owner` (a QWidget*, or nullptr) and deletes itself.
/// Requires: at least one track. Throws: vantaro::exception_win32 when no window can be made, for want of a
/// display.
void open_editor_window(const TrackList& tracks, vantaro::WindowHandle owner);

} // namespace quorvex
