// What a Matroska file says of its first audio track.
#pragma once

#include "vantaro/tags/audio/properties.h"

#include <cstdint>
#include <string_view>

namespace vantaro::core::tags {

struct MatroskaTrack {
    std::uint64_t uid = 0;
    std::string_view codec = {};
    std::string_view audio = {}; ///< the content of the Audio element
};

/// `tracks` is the content of the Tracks element, and outlives the result.
MatroskaTrack first_audio_track(std::string_view tracks);

/// `info` is the content of the Info element.
AudioProperties describe_matroska(const MatroskaTrack& track, std::string_view info, std::size_t file_size);

} // namespace vantaro::core::tags
