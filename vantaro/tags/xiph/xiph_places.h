// Names of Vorbis comments that differ from those of the fields, or that are other customary names for them.
#pragma once

#include "vantaro/tags/field_places.h"

namespace vantaro::core::tags {

inline constexpr auto xiph_places = std::to_array<FieldPlace>({
    {"TRACKNUMBER", "TRACKNUMBER"},
    {"TRACKNUMBER", "TRACKNUM"},
    {"TRACKNUMBER", "TRACK"},
    {"TOTALTRACKS", "TOTALTRACKS"},
    {"TOTALTRACKS", "TRACKTOTAL"},
    {"DISCNUMBER", "DISCNUMBER"},
    {"DISCNUMBER", "DISC"},
    {"TOTALDISCS", "TOTALDISCS"},
    {"TOTALDISCS", "DISCTOTAL"},
    {"MOVEMENTNUMBER", "MOVEMENT"},
    {"MOVEMENTCOUNT", "MOVEMENTTOTAL"},
    {"ALBUMARTIST", "ALBUMARTIST"},
    {"ALBUMARTIST", "ALBUM ARTIST"},
    {"LYRICS", "LYRICS"},
    {"LYRICS", "UNSYNCEDLYRICS"},
    {"LYRICS", "UNSYNCED LYRICS"},
    {"DATE", "DATE"},
    {"DATE", "YEAR", true},
    {"COMMENT", "COMMENT"},
    {"COMMENT", "DESCRIPTION", true},
    {"SUBTITLE", "SUBTITLE"},
    {"SUBTITLE", "VERSION", true},
    {"LABEL", "LABEL"},
    {"LABEL", "ORGANIZATION", true},
    {"LABEL", "PUBLISHER", true},
    {"BPM", "BPM"},
    {"BPM", "TEMPO", true},
    {"INITIALKEY", "KEY"},
    {"INITIALKEY", "INITIALKEY"},
    {"ENCODING", "ENCODERSETTINGS"},
    {"ENCODING", "ENCODING"},
    {"ARTISTWEBPAGE", "WEBSITE"},
    {"ARTISTWEBPAGE", "ARTISTWEBPAGE"},
    {"SHOWWORKMOVEMENT", "SHOWMOVEMENT"},
});
static_assert(is_sound(xiph_places));

} // namespace vantaro::core::tags
