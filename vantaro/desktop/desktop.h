// The host with its window: everything that `vantaro` does where there is a display.
//
//     if (has_display()) return run_desktop(argc, argv, setup, paths);
//
// Main thread.
#pragma once

#include "vantaro/application/host.h"

#include <string>
#include <vector>

namespace vantaro::core {

/// Whether the environment names a display, or a platform of the toolkit's that needs none.
bool has_display();

/// Shows the window with the tracks of these files, folders and playlists, until it is closed or the process
/// is interrupted. Console, messages, questions, watcher and interrupt of `setup` are the window's own,
/// whatever it says.
/// Requires: no QCoreApplication exists.
/// @returns an exit status.
int run_desktop(int& argc, char** argv, HostSetup setup, const std::vector<std::string>& paths);

} // namespace vantaro::core
