// Reading and editing the tags of audio files: the one place that knows how each format stores a field.
//
//     TrackInfoRecord before;
//     read_tags(path, before);
//     TrackInfoRecord after(before);
//     after.set_field("GENRE", "Jazz");
//     FileEdit edit = write_tags(file, field_changes(before.fields(), after.fields())).edit;
//
// Formats: MP3, FLAC, Ogg Vorbis, Opus, Ogg FLAC, Speex, MP4, WavPack, Monkey's Audio, Musepack, True Audio,
// WAV, RF64, AIFF, DSF, DSDIFF, CAF, ASF, Matroska (WebM too), AAC, AC-3, TAK, OptimFROG, Shorten. The format
// is told by the content, by the extension of the name only when the content does not say.
//
// Fields have upper-case names of one vocabulary, whatever the format calls them (id3v2_places.h and its
// neighbours list them); a name that no table has is stored under that very name. Numbers and totals are
// separate fields in every format: TRACKNUMBER and TOTALTRACKS, DISCNUMBER and TOTALDISCS, MOVEMENTNUMBER and
// MOVEMENTCOUNT. COMMENT:X and LYRICS:X are ID3v2 comments and lyrics of description X; PERFORMER:ROLE is a
// musician with an instrument. Pictures, ratings, timed lyrics, chapters and other binary data are no fields.
//
// A name that a format's table has as another name for a field is that field, also for who looks at or edits
// the record (FieldRules): ALBUM ARTIST is ALBUMARTIST. Names that programs use with more than one meaning,
// such as YEAR or DESCRIPTION in a Vorbis comment, are the field only where the customary name is missing.
//
// Several tags in one file: a field comes from the first tag that has it. The order is the format's own tag
// (FLAC: Vorbis comment), then ID3v2, APE, ID3v1 for MP3, AAC, FLAC and True Audio; APE, ID3v2, ID3v1 for
// Monkey's Audio, Musepack, WavPack, AC-3, TAK, OptimFROG and Shorten; ID3v2, INFO for WAV and RF64; in
// Matroska the segment's title stands behind the tags. A change is made in every tag that the file has (INFO
// and the segment's title: only where it has the field already, a title too long for its place not at all); a
// field removed is gone from all of them. No tag is added as long as those present hold the change exactly;
// otherwise the format's customary tag is added (ID3v2, 2.4 as a rule, for MP3, AAC, True Audio, WAV, RF64,
// AIFF, DSF and DSDIFF; APE; Vorbis comment; CAF's "info"; Matroska's) and gets the other fields too, so that
// a program that reads only the first tag misses nothing.
//
// Empty values: Vorbis comments and MP4 keep them. The others cannot tell an empty value from none: it is
// left out there, and a field with only empty values is removed.
//
// All functions may be called from any thread, on different files at the same time.
#pragma once

#include "host/api/abort_flag.h"
#include "host/api/track_info_record.h"
#include "vantaro/common/file_edit.h"
#include "vantaro/tags/tag_options.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core {

/// One field's new values. No values: the field is removed.
struct FieldChange {
    std::string name;
    std::vector<std::string> values;

    friend bool operator==(const FieldChange&, const FieldChange&) = default;
};

/// What turns `before` into `after`: fields whose value lists differ, those that are new, and those that are
/// gone. Names match without regard to ASCII case, values byte for byte; a different order of fields is no
/// change. First the fields of `after` in their order, then the removed ones.
std::vector<FieldChange> field_changes(const std::vector<TrackField>& before,
                                       const std::vector<TrackField>& after);

/// Replaces the fields, technical fields, length, replay gain and rules of `info` by those of the file.
///
/// Technical fields, each absent when the format does not tell: codec, codec_profile, encoding ("lossless" or
/// "lossy"), bitrate (kbit/s), samplerate (Hz), channels, bitspersample, tool, tagtype ("ID3v2.3|ID3v1"), and
/// cue_embedded ("yes" or "no") for the formats that customarily carry a cue sheet.
///
/// Throws exception_io_not_found, exception_io_denied, exception_io (with the system's text) when the file
/// cannot be read, exception_io_data when it is no audio file or damaged, exception_aborted soon after
/// `abort` is set. `info` is then unchanged.
///
/// A file whose first frame of audio is not found within 16 MiB, or the last one (Ogg) within 64 MiB, counts
/// as damaged. An MP3 of tags alone, or with nothing but zeros behind them, is one without facts about audio.
///
/// `options` are those that the file is going to be written with; the rules of `info` show what comes of
/// them.
void read_tags(const std::string& path, TrackInfoRecord& info, const AbortFlag* abort = nullptr,
               const TagOptions& options = {});

/// The same of a file that is open already.
void read_tags(const ByteSource& file, TrackInfoRecord& info, const AbortFlag* abort = nullptr,
               const TagOptions& options = {});

/// An ID3v2 tag becomes one of another version.
struct TagVersionChange {
    std::string before; ///< "ID3v2.3"
    std::string after;
};

/// What writing came to.
struct WriteResult {
    /// All fields as the file has them then.
    std::vector<TrackField> fields;
    /// What is to be replaced in the file; empty when it says the same already ("3/9" for a TRACKNUMBER and
    /// its total).
    FileEdit edit;
    std::optional<TagVersionChange> tag_version = {};
};

/// What makes exactly these changes and keeps everything else; the file is not touched. Of several changes of
/// one field the last one counts. A TRACKNUMBER (DISCNUMBER, MOVEMENTNUMBER) of the form "3/12" sets the
/// total too, unless the changes name the total. MP4 stores numbers: "03" is read back as "3".
///
/// ID3v2 becomes what `options` say; by default it stays in the version that it has, and 2.3 becomes 2.4 when
/// a changed field has several values, which only 2.4 has a form for. 2.2 counts as 2.3, which it becomes.
///
/// Throws what read_tags throws, and exception_io naming the field and the reason when the format cannot hold
/// a name or a value.
WriteResult write_tags(const ByteSource& file, std::span<const FieldChange> changes,
                       const AbortFlag* abort = nullptr, const TagOptions& options = {});

/// Whether the extension is one of an audio format that read_tags knows. Looks at the name only.
bool is_audio_file_name(std::string_view path);

} // namespace vantaro::core
