// A title-formatting pattern as actions use it: compiled when it is first needed, kept until the pattern
// changes.
//
//     TitleScript script(pattern);
//     std::string text = script.format(track, info, &fields);
//
// One run at a time.
#pragma once

#include "host/access.h"
#include "host/api/title_format.h"
#include "host/api/track.h"

#include <string>

namespace quorvex {

/// What is compiled in place of a pattern that does not compile.
inline constexpr const char* error_pattern = "<ERROR>";

class TitleScript {
public:
    TitleScript() = default;
    explicit TitleScript(std::string_view pattern) : pattern_(pattern) {}

    const std::string& pattern() const { return pattern_; }
    /// The setting itself; the compiled script does not change with it.
    std::string& pattern_setting() { return pattern_; }

    /// Formats the given tags. `hook` may be nullptr.
    std::string format(vantaro::TrackHandle& track, const vantaro::TrackInfo& info,
                       vantaro::TitleFormatHook* hook);
    /// Formats what the host holds of the track's tags.
    std::string format_held(vantaro::TrackHandle& track);

private:
    vantaro::TitleFormatScript& compiled();

    std::string pattern_;
    Ref<vantaro::TitleFormatScript> script_;
};

} // namespace quorvex
