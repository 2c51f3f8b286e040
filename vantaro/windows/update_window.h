// An update as the desktop shows it: a small window with its progress and a Cancel button when it takes
// longer than a moment, and a list of what failed at the end.
//
//     setup.make_watcher = [&](std::size_t total, WindowHandle parent) {
//         return make_update_window(static_cast<QWidget*>(parent), total);
//     };
//
// Main thread, but for what the watcher hears of each track.
#pragma once

#include "vantaro/update/tag_io.h"

#include <QString>
#include <QWidget>

#include <cstddef>
#include <memory>
#include <string>

namespace vantaro::core {

/// What is being done to the tracks, and, in the report of what failed, what was done to the others.
struct UpdateTexts {
    QString doing = QStringLiteral("Updating tags");
    std::string done = "updated";
};

/// The watcher of an update of `total` tracks. Cancel ends this update, and no other. `parent` (nullptr for
/// none) may go at any time: the update goes on, and what failed is shown in a window by itself then.
std::unique_ptr<UpdateWatcher> make_update_window(QWidget* parent, std::size_t total,
                                                  const UpdateTexts& texts = {});

} // namespace vantaro::core
