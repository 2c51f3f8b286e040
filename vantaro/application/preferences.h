// What the user has set for the host itself: "preferences.json" in the folder of the configurations.
//
//     { "undo_days": 30, "undo_bytes": 1000000000, "keep_times": false,
//       "id3v2": "as-needed", "id3v2_separator": "/" }
//
//     const Preferences preferences = load_preferences(config_dir, report);
//
// Any thread.
#pragma once

#include "vantaro/journal/run_store.h"
#include "vantaro/tags/tag_options.h"

#include <functional>
#include <string>

namespace vantaro::core {

struct Preferences {
    /// "undo_days", "undo_bytes": how long runs can be taken back, and how much room that may take.
    Retention undo;
    /// "keep_times": files keep their times of change when their tags are written.
    bool keep_times = false;
    /// "id3v2", "id3v2_separator": which version of ID3v2 is written, and what stands between joined values.
    TagOptions tags = {};
    /// Whether these are the user's: those of the file, or the defaults where there is none.
    bool are_known = true;
};

/// What the file says; a name that it does not have keeps its default. A file that cannot be read, or a value
/// that cannot be, is reported as a line and has no effect.
Preferences load_preferences(const std::string& config_dir,
                             const std::function<void(const std::string& line)>& report);

/// Puts the preferences into the file, and leaves whatever else it says as it is. A file that is no JSON
/// object is kept under another name. Throws: vantaro_io::exception_io; the file is as it was then.
void save_preferences(const std::string& config_dir, const Preferences& preferences);

} // namespace vantaro::core
