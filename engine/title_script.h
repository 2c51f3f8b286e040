// A title-formatting pattern as actions use it: compiled when it is first needed, kept until the pattern
// changes.
//
//     TitleScript script;
//     std::string text = script.format(pattern, track, info, &fields);
//     script.drop();      // when the pattern has changed
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
    /// Forgets what was compiled.
    void drop() { script_ = nullptr; }

    /// Formats the given tags. `hook` may be nullptr.
    std::string format(const std::string& pattern, vantaro::TrackHandle& track,
                       const vantaro::TrackInfo& info, vantaro::TitleFormatHook* hook);
    /// Formats what the host holds of the track's tags. `filter` may be nullptr.
    std::string format_held(const std::string& pattern, vantaro::TrackHandle& track,
                            vantaro::TitleFormatTextFilter* filter = nullptr);

private:
    vantaro::TitleFormatScript& compiled(const std::string& pattern);

    Ref<vantaro::TitleFormatScript> script_;
};

} // namespace quorvex
