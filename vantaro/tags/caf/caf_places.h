// Keys of the information in CAF files. Those with blanks are the format's own; the others are what programs
// write that convert from other formats.
#pragma once

#include "vantaro/tags/field_places.h"

namespace vantaro::core::tags {

inline constexpr auto caf_places = std::to_array<FieldPlace>({
    {"TITLE", "title"},
    {"SUBTITLE", "subtitle"},
    {"ARTIST", "artist"},
    {"ALBUM", "album"},
    {"ALBUMARTIST", "album artist"},
    {"ALBUMARTIST", "album_artist"},
    {"ALBUMARTIST", "ALBUMARTIST"},
    {"GENRE", "genre"},
    {"DATE", "recorded date"},
    {"DATE", "year"},
    {"DATE", "date"},
    {"TRACKNUMBER", "track number"},
    {"TRACKNUMBER", "track"},
    {"TRACKNUMBER", "TRACKNUMBER"},
    {"TOTALTRACKS", "TOTALTRACKS"},
    {"DISCNUMBER", "disc number"},
    {"DISCNUMBER", "disc"},
    {"DISCNUMBER", "DISCNUMBER"},
    {"TOTALDISCS", "TOTALDISCS"},
    {"MOVEMENTNUMBER", "movement number"},
    {"MOVEMENTNUMBER", "MOVEMENTNUMBER"},
    {"MOVEMENTCOUNT", "MOVEMENTCOUNT"},
    {"COMMENT", "comments"},
    {"COMMENT", "comment"},
    {"COMPOSER", "composer"},
    {"LYRICIST", "lyricist"},
    {"COPYRIGHT", "copyright"},
    {"BPM", "tempo"},
    {"BPM", "BPM"},
    {"INITIALKEY", "key signature"},
    {"INITIALKEY", "INITIALKEY"},
    {"TIMESIGNATURE", "time signature"},
    {"ISRC", "ISRC"},
    {"ENCODING", "encoding application"},
    {"ENCODING", "encoder"},
    {"ENCODING", "ENCODING"},
});
static_assert(is_sound(caf_places));

} // namespace vantaro::core::tags
