// Entries of LIST INFO.
#pragma once

#include "vantaro/tags/field_places.h"

namespace vantaro::core::tags {

inline constexpr auto info_places = std::to_array<FieldPlace>({
    {"TITLE", "INAM"},
    {"ARTIST", "IART"},
    {"ALBUM", "IPRD"},
    {"GENRE", "IGNR"},
    {"DATE", "ICRD"},
    {"COMMENT", "ICMT"},
    {"COPYRIGHT", "ICOP"},
    {"LANGUAGE", "ILNG"},
    {"TRACKNUMBER", "ITRK"},
    {"TRACKNUMBER", "IPRT"},
    {"COMPOSER", "IMUS"},
    {"WRITER", "IWRI"},
    {"ENGINEER", "IENG"},
    {"PRODUCER", "IPRO"},
    {"MEDIA", "IMED"},
    {"RELEASECOUNTRY", "ICNT"},
    {"ENCODEDBY", "IENC"},
    {"ENCODING", "ISFT"},
});
static_assert(is_sound(info_places));

} // namespace vantaro::core::tags
