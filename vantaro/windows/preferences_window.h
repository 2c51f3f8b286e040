// The preferences of the host and of its components.
//
//     show_preferences(host, config_dir, &main_window);
//
// Nothing takes effect before OK or Apply. The host's own are stored at once then; those of components take
// effect in them, and are stored with their configuration.
//
// Main thread.
#pragma once

#include "vantaro/application/host.h"

#include <QWidget>

#include <string>

namespace vantaro::core {

/// Shows the window and returns when it is closed. `config_dir` is where "preferences.json" lies.
void show_preferences(Host& host, const std::string& config_dir, QWidget* parent);

} // namespace vantaro::core
