// Where Matroska stores the fields: the level of the target (30 a track, 50 an album, 60 a set of albums),
// and the name of the tag. See https://www.matroska.org/technical/tagging.html
//
// A name that has no row stands for the field of that name at level 30, and at 50 where 30 has none.
#pragma once

#include "vantaro/tags/field_places.h"

namespace vantaro::core::tags {

inline constexpr auto matroska_places = std::to_array<FieldPlace>({
    {"TITLE", "30:TITLE"},
    {"ARTIST", "30:ARTIST"},
    {"ALBUM", "50:TITLE"},
    {"ALBUM", "30:ALBUM"},
    {"ALBUMARTIST", "50:ARTIST"},
    {"ALBUMARTIST", "30:ALBUM_ARTIST"},
    {"TRACKNUMBER", "30:PART_NUMBER"},
    {"TOTALTRACKS", "50:TOTAL_PARTS"},
    {"TOTALTRACKS", "30:TOTAL_PARTS"},
    {"TOTALTRACKS", "30:TRACKTOTAL"},
    {"DISCNUMBER", "50:PART_NUMBER"},
    {"DISCNUMBER", "30:DISC"},
    {"TOTALDISCS", "60:TOTAL_PARTS"},
    {"TOTALDISCS", "30:DISCTOTAL"},
    {"DATE", "50:DATE_RELEASED"},
    {"DATE", "30:DATE"},
    {"DATE", "30:DATE_RELEASED"},
    {"DATE", "30:DATE_RECORDED", true},
    {"COMMENT", "30:COMMENT"},
    {"COMMENT", "30:DESCRIPTION", true},
    {"INITIALKEY", "30:INITIAL_KEY"},
    {"LABEL", "30:LABEL"},
    {"LABEL", "30:PUBLISHER", true},
    {"CATALOGNUMBER", "30:CATALOG_NUMBER"},
    {"ENGINEER", "30:SOUND_ENGINEER"},
    {"REMIXER", "30:REMIXED_BY"},
    {"MIXER", "30:MIXED_BY"},
    {"WRITER", "30:WRITTEN_BY"},
    {"ENCODEDBY", "30:ENCODED_BY"},
    {"ENCODING", "30:ENCODER_SETTINGS"},
    {"MEDIA", "30:ORIGINAL_MEDIA_TYPE"},
    {"REPLAYGAIN_TRACK_GAIN", "30:REPLAYGAIN_TRACK_GAIN"},
    {"REPLAYGAIN_TRACK_GAIN", "30:REPLAYGAIN_GAIN"},
    {"REPLAYGAIN_TRACK_PEAK", "30:REPLAYGAIN_TRACK_PEAK"},
    {"REPLAYGAIN_TRACK_PEAK", "30:REPLAYGAIN_PEAK"},
    {"REPLAYGAIN_ALBUM_GAIN", "30:REPLAYGAIN_ALBUM_GAIN"},
    {"REPLAYGAIN_ALBUM_GAIN", "50:REPLAYGAIN_GAIN"},
    {"REPLAYGAIN_ALBUM_PEAK", "30:REPLAYGAIN_ALBUM_PEAK"},
    {"REPLAYGAIN_ALBUM_PEAK", "50:REPLAYGAIN_PEAK"},
});
static_assert(is_sound(matroska_places));

} // namespace vantaro::core::tags
