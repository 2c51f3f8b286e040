// ID3v2.2, which is read but no longer written: its frames as those of ID3v2.3.
#pragma once

#include "vantaro/tags/id3v2_frames.h"

namespace vantaro::core::tags {

/// `bytes` is what follows the header of the tag. Frames that 2.3 has no name for (CRM, and those of no
/// standard) are kept under their name with an "X" in front.
std::vector<Id3v2Frame> parse_v22_frames(std::string_view bytes);

} // namespace vantaro::core::tags
