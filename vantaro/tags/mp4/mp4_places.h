// Where MP4 stores the fields: an atom of "ilst", or "--:" and the name of a freeform atom of
// com.apple.iTunes.
#pragma once

#include "vantaro/tags/field_places.h"

namespace vantaro::core::tags {

inline constexpr auto mp4_places = std::to_array<FieldPlace>({
    {"TITLE", "\xA9nam"},
    {"ARTIST", "\xA9"
               "ART"},
    {"ALBUM", "\xA9"
              "alb"},
    {"ALBUMARTIST", "aART"},
    {"GENRE", "\xA9gen"},
    {"GENRE", "gnre"},
    {"DATE", "\xA9"
             "day"},
    {"COMMENT", "\xA9"
                "cmt"},
    {"COPYRIGHT", "cprt"},
    {"COMPOSER", "\xA9wrt"},
    {"DIRECTOR", "\xA9"
                 "dir"},
    {"LYRICS", "\xA9lyr"},
    {"GROUPING", "\xA9grp"},
    {"WORK", "\xA9wrk"},
    {"MOVEMENTNAME", "\xA9mvn"},
    {"ENCODEDBY", "\xA9too"},
    {"TITLESORT", "sonm"},
    {"ARTISTSORT", "soar"},
    {"ALBUMSORT", "soal"},
    {"ALBUMARTISTSORT", "soaa"},
    {"COMPOSERSORT", "soco"},
    {"SHOWSORT", "sosn"},
    {"PODCASTCATEGORY", "catg"},
    {"PODCASTDESC", "desc"},
    {"LONGDESCRIPTION", "ldes"},
    {"PODCASTID", "egid"},
    {"PODCASTURL", "purl"},
    {"TVEPISODEID", "tven"},
    {"TVNETWORK", "tvnn"},
    {"TVSHOW", "tvsh"},
    {"TRACKNUMBER", "trkn"},
    {"DISCNUMBER", "disk"},
    {"BPM", "tmpo"},
    {"MOVEMENTNUMBER", "\xA9mvi"},
    {"MOVEMENTCOUNT", "\xA9mvc"},
    {"TVSEASON", "tvsn"},
    {"TVEPISODE", "tves"},
    {"COMPILATION", "cpil"},
    {"GAPLESSPLAYBACK", "pgap"},
    {"PODCAST", "pcst"},
    {"SHOWWORKMOVEMENT", "shwm"},
    {"ORIGINALDATE", "--:originaldate"},
    {"INITIALKEY", "--:initialkey"},
    {"INITIALKEY", "--:KEY", true},
    {"RELEASECOUNTRY", "--:MusicBrainz Album Release Country"},
    {"RELEASESTATUS", "--:MusicBrainz Album Status"},
    {"RELEASETYPE", "--:MusicBrainz Album Type"},
    {"MUSICBRAINZ_TRACKID", "--:MusicBrainz Track Id"},
    {"MUSICBRAINZ_RELEASETRACKID", "--:MusicBrainz Release Track Id"},
    {"MUSICBRAINZ_ARTISTID", "--:MusicBrainz Artist Id"},
    {"MUSICBRAINZ_ALBUMARTISTID", "--:MusicBrainz Album Artist Id"},
    {"MUSICBRAINZ_ALBUMID", "--:MusicBrainz Album Id"},
    {"MUSICBRAINZ_RELEASEGROUPID", "--:MusicBrainz Release Group Id"},
    {"MUSICBRAINZ_WORKID", "--:MusicBrainz Work Id"},
    {"MUSICBRAINZ_DISCID", "--:MusicBrainz Disc Id"},
    {"MUSICBRAINZ_COMPOSERID", "--:MusicBrainz Composer Id"},
    {"MUSICBRAINZ_ORIGINALARTISTID", "--:MusicBrainz Original Artist Id"},
    {"MUSICBRAINZ_ORIGINALALBUMID", "--:MusicBrainz Original Album Id"},
    {"ACOUSTID_ID", "--:Acoustid Id"},
    {"ACOUSTID_FINGERPRINT", "--:Acoustid Fingerprint"},
    {"MUSICIP_PUID", "--:MusicIP PUID"},
});
static_assert(is_sound(mp4_places));

} // namespace vantaro::core::tags
