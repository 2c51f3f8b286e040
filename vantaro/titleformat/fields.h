// The host's own fields: those that fall back on others, and those that are no metadata.
//
//     FieldSink sink(...);
//     bool found = write_field(field, "artist", sources, sink);
//
// Any thread.
#pragma once

#include "host/api/title_format.h"
#include "host/api/track.h"
#include "vantaro/titleformat/program.h"
#include "vantaro/titleformat/text_buffer.h"

#include <span>
#include <string_view>

namespace vantaro::core {

enum class BuiltInField : std::uint8_t {
    none,      // a metadata field of that name
    technical, // the name behind the two underscores
    title,
    artist,
    album_artist,
    track_number,
    plain_track_number,
    total_tracks,
    disc_number,
    total_discs,
    date,
    year,
    length,
    length_seconds,
    bitrate,
    samplerate,
    channels,
    bits_per_sample,
    codec,
    codec_profile,
    encoding,
    tool,
    tag_type,
    track_gain,
    track_peak,
    album_gain,
    album_peak,
    file_name,
    file_name_extension,
    extension,
    directory_name,
    parent_directory_name,
    directory_path,
    path,
    subsong,
    file_size,
    file_size_natural,
    last_modified,
    loop_value,
    loop_count,
};

/// One name of a field, as documentation and completion show it.
struct FieldRow {
    std::string_view name;
    BuiltInField field;
};

/// Sorted by name.
std::span<const FieldRow> field_rows();

/// What a name between percent signs stands for, without regard to the case of ASCII letters.
BuiltInField find_field(std::string_view name);

/// Between the values of a field that come out as one text.
inline constexpr std::string_view value_separator = ", ";

/// Where the values of fields go: each through the filter, then joined or followed by a NUL byte.
class FieldSink final : public TitleFormatOutput {
public:
    FieldSink(TextBuffer& out, TitleFormatTextFilter* filter, bool as_values)
        : out_(out), filter_(filter), as_values_(as_values) {}

    void put(std::string_view value) {
        if (count_ > 0 && !as_values_)
            out_.append(value_separator);
        ++count_;
        if (filter_)
            filter_->write(*this, value.data(), value.size());
        else
            out_.append(value);
        if (as_values_)
            out_.append('\0');
    }
    /// What the filter lets through. Zero bytes, which would part values, are left out.
    void write(const char* text, std::size_t length) override;

private:
    TextBuffer& out_;
    TitleFormatTextFilter* const filter_;
    const bool as_values_;
    std::size_t count_ = 0;
};

/// What fields are read from.
struct FieldSources {
    TrackHandle& track;
    const TrackInfo& info;
    std::string_view loop_value;
    std::uint64_t loop_count; // 0 outside loops
};

/// Writes the values of the field and returns whether it was found. `name` is NUL-terminated.
bool write_field(BuiltInField field, const char* name, const FieldSources& sources, FieldSink& sink);

} // namespace vantaro::core
