// What the window looked like when it was last closed: "window.ini" in the folder of the configurations.
//
//     WindowMemory memory(config_dir);
//     memory.restore(window, list);
//     ...
//     memory.store(window, list);
//
// Main thread.
#pragma once

#include "vantaro/desktop/track_list.h"

#include <QMainWindow>

#include <string>

namespace vantaro::core {

class WindowMemory {
public:
    explicit WindowMemory(const std::string& config_dir);

    /// Size and place, panels, and the columns: which are shown, their order and widths, and by which one the
    /// list is sorted. What the file does not say, or says badly, stays as it is.
    void restore(QMainWindow& window, TrackList& list) const;
    /// Returns whether it could be stored.
    bool store(const QMainWindow& window, const TrackList& list) const;

private:
    const QString path_;
};

} // namespace vantaro::core
