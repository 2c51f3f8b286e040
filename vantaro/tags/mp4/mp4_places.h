// Where MP4 stores the fields: an atom of "ilst", or "--:" and the name of a freeform atom of
// com.apple.iTunes. The sign "©" in an atom's name is the single byte that it is in Latin-1.
#pragma once

#include "vantaro/tags/field_places.h"

namespace vantaro::core::tags {

/// What an atom holds by its definition.
enum class Mp4Kind { text, genre, pair, number, flag };

struct Mp4Place {
    FieldPlace names;
    Mp4Kind kind = Mp4Kind::text;
    std::size_t size = 0; ///< of the number or pair in a new atom, in bytes
};

inline constexpr auto mp4_atoms = std::to_array<Mp4Place>({
    {{"TITLE", "©nam"}},
    {{"ARTIST", "©ART"}},
    {{"ALBUM", "©alb"}},
    {{"ALBUMARTIST", "aART"}},
    {{"GENRE", "©gen"}},
    {{"GENRE", "gnre"}, Mp4Kind::genre},
    {{"DATE", "©day"}},
    {{"COMMENT", "©cmt"}},
    {{"COPYRIGHT", "cprt"}},
    {{"COMPOSER", "©wrt"}},
    {{"DIRECTOR", "©dir"}},
    {{"LYRICS", "©lyr"}},
    {{"GROUPING", "©grp"}},
    {{"WORK", "©wrk"}},
    {{"MOVEMENTNAME", "©mvn"}},
    {{"ENCODEDBY", "©too"}},
    {{"TITLESORT", "sonm"}},
    {{"ARTISTSORT", "soar"}},
    {{"ALBUMSORT", "soal"}},
    {{"ALBUMARTISTSORT", "soaa"}},
    {{"COMPOSERSORT", "soco"}},
    {{"SHOWSORT", "sosn"}},
    {{"PODCASTCATEGORY", "catg"}},
    {{"PODCASTDESC", "desc"}},
    {{"LONGDESCRIPTION", "ldes"}},
    {{"PODCASTID", "egid"}},
    {{"PODCASTURL", "purl"}},
    {{"TVEPISODEID", "tven"}},
    {{"TVNETWORK", "tvnn"}},
    {{"TVSHOW", "tvsh"}},
    {{"TRACKNUMBER", "trkn"}, Mp4Kind::pair, 8},
    {{"DISCNUMBER", "disk"}, Mp4Kind::pair, 6},
    {{"BPM", "tmpo"}, Mp4Kind::number, 2},
    {{"MOVEMENTNUMBER", "©mvi"}, Mp4Kind::number, 2},
    {{"MOVEMENTCOUNT", "©mvc"}, Mp4Kind::number, 2},
    {{"TVSEASON", "tvsn"}, Mp4Kind::number, 4},
    {{"TVEPISODE", "tves"}, Mp4Kind::number, 4},
    {{"COMPILATION", "cpil"}, Mp4Kind::flag, 1},
    {{"GAPLESSPLAYBACK", "pgap"}, Mp4Kind::flag, 1},
    {{"PODCAST", "pcst"}, Mp4Kind::flag, 1},
    {{"SHOWWORKMOVEMENT", "shwm"}, Mp4Kind::flag, 1},
    {{"ORIGINALDATE", "--:originaldate"}},
    {{"INITIALKEY", "--:initialkey"}},
    {{"INITIALKEY", "--:KEY", true}},
    {{"RELEASECOUNTRY", "--:MusicBrainz Album Release Country"}},
    {{"RELEASESTATUS", "--:MusicBrainz Album Status"}},
    {{"RELEASETYPE", "--:MusicBrainz Album Type"}},
    {{"MUSICBRAINZ_TRACKID", "--:MusicBrainz Track Id"}},
    {{"MUSICBRAINZ_RELEASETRACKID", "--:MusicBrainz Release Track Id"}},
    {{"MUSICBRAINZ_ARTISTID", "--:MusicBrainz Artist Id"}},
    {{"MUSICBRAINZ_ALBUMARTISTID", "--:MusicBrainz Album Artist Id"}},
    {{"MUSICBRAINZ_ALBUMID", "--:MusicBrainz Album Id"}},
    {{"MUSICBRAINZ_RELEASEGROUPID", "--:MusicBrainz Release Group Id"}},
    {{"MUSICBRAINZ_WORKID", "--:MusicBrainz Work Id"}},
    {{"MUSICBRAINZ_DISCID", "--:MusicBrainz Disc Id"}},
    {{"MUSICBRAINZ_COMPOSERID", "--:MusicBrainz Composer Id"}},
    {{"MUSICBRAINZ_ORIGINALARTISTID", "--:MusicBrainz Original Artist Id"}},
    {{"MUSICBRAINZ_ORIGINALALBUMID", "--:MusicBrainz Original Album Id"}},
    {{"ACOUSTID_ID", "--:Acoustid Id"}},
    {{"ACOUSTID_FINGERPRINT", "--:Acoustid Fingerprint"}},
    {{"MUSICIP_PUID", "--:MusicIP PUID"}},
});

inline constexpr auto mp4_places = [] {
    std::array<FieldPlace, mp4_atoms.size()> names;
    std::ranges::transform(mp4_atoms, names.begin(), &Mp4Place::names);
    return names;
}();
static_assert(is_sound(mp4_places));

} // namespace vantaro::core::tags
