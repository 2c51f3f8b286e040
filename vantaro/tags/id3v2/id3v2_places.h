// Where ID3v2 stores the fields: a frame, or "TXXX:" and the description of a user text frame in its
// customary spelling. The comment, lyrics, date and number frames have rules of their own (id3v2_fields.cpp),
// as have the people of TIPL, TMCL and IPLS (id3v2_people.h).
//
// TIT1 is GROUPING as in most editors; iTunes' GRP1 is read as such and kept in step. WORK is TXXX:WORK.
#pragma once

#include "vantaro/tags/field_places.h"

namespace vantaro::core::tags {

/// Frames that only one version of ID3v2 defines. They are read in both; new ones go only where they belong.
inline constexpr std::array<std::string_view, 7> only_in_v24{"TDOR", "TDRL", "TDTG", "TMOO",
                                                             "TPRO", "TSST", "TDEN"};
inline constexpr std::array<std::string_view, 1> only_in_v23{"TORY"};

inline constexpr auto id3v2_places = std::to_array<FieldPlace>({
    {"TITLE", "TIT2"},
    {"ARTIST", "TPE1"},
    {"ARTISTS", "TXXX:ARTISTS"},
    {"ALBUM", "TALB"},
    {"ALBUMARTIST", "TPE2"},
    {"ALBUMARTIST", "TXXX:ALBUM ARTIST", true},
    {"SUBTITLE", "TIT3"},
    {"ORIGINALDATE", "TDOR"},
    {"ORIGINALDATE", "TORY"},
    {"RELEASEDATE", "TDRL"},
    {"ENCODINGTIME", "TDEN"},
    {"TAGGINGDATE", "TDTG"},
    {"COPYRIGHT", "TCOP"},
    {"LANGUAGE", "TLAN"},
    {"COMPILATION", "TCMP"},
    {"DISCSUBTITLE", "TSST"},
    {"MOVEMENTNAME", "MVNM"},
    {"COMPOSER", "TCOM"},
    {"LYRICIST", "TEXT"},
    {"WRITER", "TXXX:Writer"},
    {"CONDUCTOR", "TPE3"},
    {"REMIXER", "TPE4"},
    {"ORIGINALARTIST", "TOPE"},
    {"ORIGINALALBUM", "TOAL"},
    {"ORIGINALLYRICIST", "TOLY"},
    {"TITLESORT", "TSOT"},
    {"ARTISTSORT", "TSOP"},
    {"ALBUMSORT", "TSOA"},
    {"ALBUMARTISTSORT", "TSO2"},
    {"COMPOSERSORT", "TSOC"},
    {"GROUPING", "TIT1"},
    {"GROUPING", "GRP1"},
    {"BPM", "TBPM"},
    {"INITIALKEY", "TKEY"},
    {"MOOD", "TMOO"},
    {"LABEL", "TPUB"},
    {"ISRC", "TSRC"},
    {"MEDIA", "TMED"},
    {"FILETYPE", "TFLT"},
    {"LENGTH", "TLEN"},
    {"PLAYLISTDELAY", "TDLY"},
    {"OWNER", "TOWN"},
    {"PRODUCEDNOTICE", "TPRO"},
    {"RADIOSTATION", "TRSN"},
    {"RADIOSTATIONOWNER", "TRSO"},
    {"ENCODEDBY", "TENC"},
    {"ENCODING", "TSSE"},
    {"ORIGINALFILENAME", "TOFN"},
    {"PODCASTCATEGORY", "TCAT"},
    {"PODCASTDESC", "TDES"},
    {"PODCASTID", "TGID"},
    {"PODCASTURL", "WFED"},
    {"COMMERCIALINFORMATIONURL", "WCOM"},
    {"COPYRIGHTURL", "WCOP"},
    {"FILEWEBPAGE", "WOAF"},
    {"ARTISTWEBPAGE", "WOAR"},
    {"AUDIOSOURCEWEBPAGE", "WOAS"},
    {"RADIOSTATIONWEBPAGE", "WORS"},
    {"PAYMENTWEBPAGE", "WPAY"},
    {"PUBLISHERWEBPAGE", "WPUB"},
    {"SHOWWORKMOVEMENT", "TXXX:SHOWMOVEMENT"},
    {"RELEASECOUNTRY", "TXXX:MusicBrainz Album Release Country"},
    {"RELEASESTATUS", "TXXX:MusicBrainz Album Status"},
    {"RELEASETYPE", "TXXX:MusicBrainz Album Type"},
    {"MUSICBRAINZ_RELEASETRACKID", "TXXX:MusicBrainz Release Track Id"},
    {"MUSICBRAINZ_ARTISTID", "TXXX:MusicBrainz Artist Id"},
    {"MUSICBRAINZ_ALBUMARTISTID", "TXXX:MusicBrainz Album Artist Id"},
    {"MUSICBRAINZ_ALBUMID", "TXXX:MusicBrainz Album Id"},
    {"MUSICBRAINZ_RELEASEGROUPID", "TXXX:MusicBrainz Release Group Id"},
    {"MUSICBRAINZ_WORKID", "TXXX:MusicBrainz Work Id"},
    {"MUSICBRAINZ_DISCID", "TXXX:MusicBrainz Disc Id"},
    {"MUSICBRAINZ_COMPOSERID", "TXXX:MusicBrainz Composer Id"},
    {"MUSICBRAINZ_ORIGINALARTISTID", "TXXX:MusicBrainz Original Artist Id"},
    {"MUSICBRAINZ_ORIGINALALBUMID", "TXXX:MusicBrainz Original Album Id"},
    {"ACOUSTID_ID", "TXXX:Acoustid Id"},
    {"ACOUSTID_FINGERPRINT", "TXXX:Acoustid Fingerprint"},
    {"MUSICIP_PUID", "TXXX:MusicIP PUID"},
});
static_assert(is_sound(id3v2_places));

} // namespace vantaro::core::tags
