// ID3v2.2, which is read but no longer written: its frames as those of ID3v2.3.
#pragma once

#include "vantaro/tags/id3v2/id3v2_frames.h"

namespace vantaro::core::tags {

/// The frames in what follows the header of the tag, as a tag of 2.3. Frames that 2.3 has no name for (CRM,
/// and those of no standard) are kept under their name with an "X" in front; pictures have their old name and
/// body until they are written.
Id3v2Tag parse_v22_frames(const Part& content);

/// What a name of three characters with a NUL or a blank behind stands for in 2.3; empty when there is no
/// such frame, or its body would be another one.
std::string name_of_v22(std::string_view id);
/// Whether that is the name of a picture, whose body converted_picture turns into that of APIC.
bool is_picture_of_v22(std::string_view id);
std::string converted_picture(std::string_view body);

} // namespace vantaro::core::tags
