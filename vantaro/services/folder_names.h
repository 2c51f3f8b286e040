// Finding a file whose name is known but for the case of its letters.
//
//     if (const auto path = names.find_ignoring_case("/music/Album.cue")) ...      // "/music/Album.CUE"
//
// Any thread.
#pragma once

#include <ctime>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace vantaro::core {

class FolderNames {
public:
    /// The path of a file, which is no folder, in the same folder and of the same name but for the case of
    /// letters; of several, the one whose bytes come first.
    std::optional<std::string> find_ignoring_case(const std::string& path);

private:
    void list(const std::string& folder);

    // What was read last: a run asks about each file of a folder, which may hold thousands.
    std::mutex mutex_; // guards what follows
    std::string folder_;
    std::timespec changed_{};
    std::multimap<std::string, std::string> names_; // by their folded form
};

} // namespace vantaro::core
