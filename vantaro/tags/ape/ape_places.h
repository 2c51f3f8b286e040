// Keys of APE items that differ from the names of the fields.
#pragma once

#include "vantaro/tags/field_places.h"

namespace vantaro::core::tags {

inline constexpr auto ape_places = std::to_array<FieldPlace>({
    {"TRACKNUMBER", "Track"},
    {"TRACKNUMBER", "TRACKNUMBER"},
    {"DISCNUMBER", "Disc"},
    {"DISCNUMBER", "DISCNUMBER"},
    {"MOVEMENTNUMBER", "MOVEMENT"},
    {"MOVEMENTNUMBER", "MOVEMENTNUMBER"},
    {"TOTALTRACKS", "TOTALTRACKS"},
    {"TOTALTRACKS", "TRACKTOTAL"},
    {"TOTALDISCS", "TOTALDISCS"},
    {"TOTALDISCS", "DISCTOTAL"},
    {"MOVEMENTCOUNT", "MOVEMENTTOTAL"},
    {"MOVEMENTCOUNT", "MOVEMENTCOUNT"},
    {"DATE", "Year"},
    {"DATE", "DATE"},
    {"TITLE", "Title"},
    {"ARTIST", "Artist"},
    {"ALBUM", "Album"},
    {"ALBUMARTIST", "Album Artist"},
    {"ALBUMARTIST", "ALBUMARTIST"},
    {"GENRE", "Genre"},
    {"COMMENT", "Comment"},
    {"COMPOSER", "Composer"},
    {"REMIXER", "MixArtist"},
    {"REMIXER", "REMIXER"},
    {"DJMIXER", "DJMixer"},
    {"DISCSUBTITLE", "DiscSubtitle"},
    {"CATALOGNUMBER", "CatalogNumber"},
    {"ENCODEDBY", "EncodedBy"},
    {"ENCODING", "EncoderSettings"},
    {"ENCODING", "ENCODING"},
    {"INITIALKEY", "KEY"},
    {"INITIALKEY", "INITIALKEY"},
    {"ARTISTWEBPAGE", "Weblink"},
    {"ARTISTWEBPAGE", "ARTISTWEBPAGE"},
    {"ORIGINALARTIST", "Original Artist"},
    {"ORIGINALARTIST", "ORIGINALARTIST"},
    {"SHOWWORKMOVEMENT", "SHOWMOVEMENT"},
    {"LYRICS", "Lyrics"},
    {"LYRICS", "UNSYNCED LYRICS"},
    {"LYRICS", "UNSYNCEDLYRICS"},
    {"RELEASESTATUS", "MUSICBRAINZ_ALBUMSTATUS"},
    {"RELEASESTATUS", "RELEASESTATUS"},
    {"RELEASETYPE", "MUSICBRAINZ_ALBUMTYPE"},
    {"RELEASETYPE", "RELEASETYPE"},
});
static_assert(is_sound(ape_places));

} // namespace vantaro::core::tags
