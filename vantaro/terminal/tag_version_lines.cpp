#include "vantaro/terminal/tag_version_lines.h"

#include "vantaro/terminal/terminal.h"

namespace vantaro::core {

namespace {

constexpr std::size_t most_named = 5;

} // namespace

void TagVersionLines::add(const TrackOutcome& outcome) {
    if (!outcome.tag_version)
        return;
    Files& files = changes_[{outcome.tag_version->before, outcome.tag_version->after}];
    if (++files.count <= most_named)
        files.named.push_back(outcome.track->path());
}

std::string TagVersionLines::text() const {
    std::string result;
    for (const auto& [versions, files] : changes_) {
        result += versions.first + " became " + versions.second + " in " + std::to_string(files.count)
                  + (files.count == 1 ? " file:\n" : " files:\n");
        for (const std::string& name : files.named)
            result += "  " + printable(name) + '\n';
        if (files.count > most_named)
            result += "  and " + std::to_string(files.count - most_named) + " more\n";
    }
    return result;
}

} // namespace vantaro::core
