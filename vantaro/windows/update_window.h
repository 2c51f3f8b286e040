// An update as the desktop shows it: a small window with its progress and a Cancel button when it takes
// longer than a moment, and a list of what failed at the end.
//
//     setup.make_watcher = [&](std::size_t total, WindowHandle parent) {
//         return make_update_window(host->tag_io(), static_cast<QWidget*>(parent), total, "Updating tags");
//     };
//
// Main thread, but for what the watcher hears of each track.
#pragma once

#include "vantaro/update/tag_io.h"

#include <QString>
#include <QWidget>

#include <cstddef>
#include <memory>

namespace vantaro::core {

/// The watcher of an update of `total` tracks. `what` says what is being done to them. Cancel ends all
/// updates of `tag_io`, which outlives the watcher. `parent` (nullptr for none) may go at any time: the
/// update goes on, and what failed is shown in a window by itself then.
std::unique_ptr<UpdateWatcher> make_update_window(TagIO& tag_io, QWidget* parent, std::size_t total,
                                                  const QString& what);

} // namespace vantaro::core
