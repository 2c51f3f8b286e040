#include "vantaro/titleformat/fields.h"

#include "host/api/track_info_record.h"
#include "vantaro/common/path_text.h"
#include "vantaro/common/utf8.h"
#include "vantaro/titleformat/functions/number_text.h"
#include "vantaro/titleformat/functions/path_text.h"
#include "vantaro/titleformat/names.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <optional>

namespace vantaro::core {

namespace {

using enum BuiltInField;

constexpr auto rows = sorted_by_name(std::to_array<FieldRow>({
    {"title", title},
    {"artist", artist},
    {"album artist", album_artist},
    {"albumartist", album_artist},
    {"tracknumber", track_number},
    {"track", track_number},
    {"track number", plain_track_number},
    {"totaltracks", total_tracks},
    {"tracktotal", total_tracks},
    {"discnumber", disc_number},
    {"disc", disc_number},
    {"disc number", disc_number},
    {"totaldiscs", total_discs},
    {"disctotal", total_discs},
    {"date", date},
    {"year", year},
    {"length", length},
    {"length_seconds", length_seconds},
    {"bitrate", bitrate},
    {"samplerate", samplerate},
    {"channels", channels},
    {"bitspersample", bits_per_sample},
    {"codec", codec},
    {"codec_profile", codec_profile},
    {"encoding", encoding},
    {"tool", tool},
    {"tagtype", tag_type},
    {"replaygain_track_gain", track_gain},
    {"replaygain_track_peak", track_peak},
    {"replaygain_album_gain", album_gain},
    {"replaygain_album_peak", album_peak},
    {"filename", file_name},
    {"_filename", file_name},
    {"filename_ext", file_name_extension},
    {"extension", extension},
    {"_extension", extension},
    {"directoryname", directory_name},
    {"parentdirectoryname", parent_directory_name},
    {"directorypath", directory_path},
    {"_dirname", directory_path},
    {"path", path},
    {"_filepath", path},
    {"subsong", subsong},
    {"filesize", file_size},
    {"_filesize", file_size},
    {"filesize_natural", file_size_natural},
    {"last_modified", last_modified},
    {"_loop_value", loop_value},
    {"_loop_count", loop_count},
}));
static_assert(names_are_unique(rows));

bool put_all_values(const TrackInfo& info, const char* name, FieldSink& sink) {
    const std::size_t field = info.find_field(name);
    if (field == no_field)
        return false;
    const std::size_t count = info.value_count(field);
    for (std::size_t i = 0; i < count; ++i)
        sink.put(info.value(field, i));
    return count > 0;
}

/// The first of the fields that is there.
bool put_first_field(const TrackInfo& info, std::initializer_list<const char*> names, FieldSink& sink) {
    for (const char* name : names)
        if (put_all_values(info, name, sink))
            return true;
    return false;
}

std::optional<std::string_view> first_value(const TrackInfo& info, std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (const std::size_t field = info.find_field(name); field != no_field && info.value_count(field) > 0)
            return info.value(field, 0);
    return std::nullopt;
}

bool put_text(std::string_view text, FieldSink& sink) {
    if (text.empty())
        return false;
    sink.put(text);
    return true;
}

bool put_number(std::uint64_t number, FieldSink& sink) {
    return put_text(std::to_string(number), sink);
}

enum class NumberStyle : std::uint8_t { plain, two_digits };

/// "3/12" is number 3 of 12. What is no number stays as it is.
bool put_counted(const TrackInfo& info, std::initializer_list<const char*> names, NumberStyle style,
                 FieldSink& sink) {
    const std::optional<std::string_view> value = first_value(info, names);
    if (!value)
        return false;
    std::string_view number = without_blanks(value->substr(0, value->find('/')));
    if (number.empty() || number.find_first_not_of("0123456789") != std::string_view::npos) {
        sink.put(*value);
        return true;
    }
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size() - 1));
    if (style == NumberStyle::two_digits && number.size() == 1) {
        const char digits[] = {'0', number.front()};
        sink.put({digits, 2});
    } else {
        sink.put(number);
    }
    return true;
}

bool put_total(const TrackInfo& info, std::initializer_list<const char*> totals,
               std::initializer_list<const char*> numbers, FieldSink& sink) {
    if (const auto total = first_value(info, totals)) {
        sink.put(*total);
        return true;
    }
    const std::string_view number = first_value(info, numbers).value_or("");
    const std::size_t slash = number.find('/');
    return slash != std::string_view::npos && put_text(without_blanks(number.substr(slash + 1)), sink);
}

bool put_year(const TrackInfo& info, FieldSink& sink) {
    for (const char* name : {"DATE", "YEAR"})
        if (const auto value = first_value(info, {name})) {
            const std::string_view start = without_blanks(*value).substr(0, 4);
            if (start.size() == 4 && start.find_first_not_of("0123456789") == std::string_view::npos)
                return put_text(start, sink);
        }
    return false;
}

/// Hours only when there are any.
bool put_length(double length, FieldSink& sink) {
    constexpr double most = 1e15; // beyond this, seconds are not told apart
    if (!(length > 0) || length > most)
        return false;
    const auto seconds = static_cast<long long>(std::llround(length));
    char text[40];
    const int size = seconds < 3600
                         ? std::snprintf(text, sizeof text, "%lld:%02lld", seconds / 60, seconds % 60)
                         : std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", seconds / 3600,
                                         seconds / 60 % 60, seconds % 60);
    return put_text({text, static_cast<std::size_t>(size)}, sink);
}

bool put_length_seconds(double length, FieldSink& sink) {
    constexpr double most = 1e15;
    return length > 0 && length <= most && put_number(static_cast<std::uint64_t>(std::llround(length)), sink);
}

bool put_technical(const TrackInfo& info, const char* name, FieldSink& sink) {
    const std::size_t index = info.find_technical(name);
    if (index == no_field)
        return false;
    sink.put(info.technical_value(index));
    return true;
}

/// Gains and peaks: as the tags tell them, or else as the record has them.
bool put_gain(const TrackInfo& info, const char* name, float gain, FieldSink& sink) {
    if (put_all_values(info, name, sink))
        return true;
    char text[64];
    const int size = std::snprintf(text, sizeof text, "%+.2f dB", static_cast<double>(gain));
    return gain != ReplayGain::unknown_gain && put_text({text, static_cast<std::size_t>(size)}, sink);
}

bool put_peak(const TrackInfo& info, const char* name, float peak, FieldSink& sink) {
    if (put_all_values(info, name, sink))
        return true;
    char text[64];
    const int size = std::snprintf(text, sizeof text, "%.6f", static_cast<double>(peak));
    return peak != ReplayGain::unknown_peak && put_text({text, static_cast<std::size_t>(size)}, sink);
}

/// A path as a text, which is made only where the path is none yet.
class PathText {
public:
    explicit PathText(std::string_view path)
        : made_(is_utf8(path) ? std::string() : path_as_text(path)), text_(made_.empty() ? path : made_) {}
    PathText(const PathText&) = delete;
    PathText& operator=(const PathText&) = delete;
    std::string_view get() const { return text_; }

private:
    const std::string made_;
    const std::string_view text_;
};

/// Parts of the text, rather than texts of the parts: a part can be UTF-8 where the whole name is not.
bool put_of_path(BuiltInField part, std::string_view track_path, FieldSink& sink) {
    const PathText text(track_path);
    const std::string_view file = text.get();
    switch (part) {
    case file_name:
        return put_text(file_stem(file), sink);
    case file_name_extension:
        return put_text(file_base_name(file), sink);
    case extension:
        return put_text(file_extension(file), sink);
    case directory_name:
        return put_text(file_base_name(parent_path(file)), sink);
    case parent_directory_name:
        return put_text(file_base_name(parent_path(parent_path(file))), sink);
    case directory_path:
        return put_text(parent_path(file), sink);
    default:
        return put_text(file, sink);
    }
}

FileStats stats_of(TrackHandle& track) {
    TrackInfoHolder* held = nullptr;
    return track.get_info(held) ? Ref<TrackInfoHolder>::adopt(held)->stats() : FileStats{};
}

bool put_natural_size(std::uint64_t size, FieldSink& sink) {
    if (size < 1024)
        return put_text(std::to_string(size) + " B", sink);
    double amount = static_cast<double>(size) / 1024;
    std::size_t unit = 0;
    constexpr std::string_view units[] = {"KB", "MB", "GB", "TB", "PB", "EB"};
    for (; amount >= 1024 && unit + 1 < std::size(units); ++unit)
        amount /= 1024;
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%.1f ", amount);
    return put_text(std::string(text, static_cast<std::size_t>(length)).append(units[unit]), sink);
}

/// In local time.
bool put_time(std::uint64_t timestamp, FieldSink& sink) {
    constexpr std::uint64_t units_per_second = 10'000'000;
    constexpr std::int64_t seconds_from_1601_to_1970 = 11'644'473'600;
    if (timestamp == 0)
        return false;
    const auto seconds =
        static_cast<std::time_t>(timestamp / units_per_second) - std::time_t{seconds_from_1601_to_1970};
    std::tm parts{};
    char text[64];
    if (!localtime_r(&seconds, &parts))
        return false;
    return put_text({text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts)}, sink);
}

bool put_file_stats(BuiltInField field, TrackHandle& track, FieldSink& sink) {
    const FileStats stats = stats_of(track);
    if (field == last_modified)
        return put_time(stats.timestamp, sink);
    if (stats.size == FileStats::unknown_size)
        return false;
    return field == file_size ? put_number(stats.size, sink) : put_natural_size(stats.size, sink);
}

bool put_codec(const FieldSources& sources, FieldSink& sink) {
    if (put_technical(sources.info, "codec", sink))
        return true;
    std::string name(file_extension(PathText(sources.track.path()).get()));
    for (char& c : name)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return put_text(name, sink);
}

} // namespace

void FieldSink::write(const char* text, std::size_t length) {
    for (std::string_view rest(text, length); !rest.empty();) {
        const std::size_t end = std::min(rest.find('\0'), rest.size());
        out_.append(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

std::span<const FieldRow> field_rows() {
    return rows;
}

BuiltInField find_field(std::string_view name) {
    if (name.starts_with("__") && name.size() > 2)
        return technical;
    const FieldRow* row = find_by_name(rows, name);
    return row ? row->field : none;
}

bool write_field(BuiltInField field, const char* name, const FieldSources& sources, FieldSink& sink) {
    const TrackInfo& info = sources.info;
    switch (field) {
    case none:
        return put_all_values(info, name, sink);
    case technical:
        return put_technical(info, name + 2, sink);
    case title:
        return put_all_values(info, "TITLE", sink) || put_of_path(file_name, sources.track.path(), sink);
    case artist:
        return put_first_field(info, {"ARTIST", "ALBUMARTIST", "ALBUM ARTIST"}, sink);
    case album_artist:
        return put_first_field(info, {"ALBUMARTIST", "ALBUM ARTIST", "ARTIST"}, sink);
    case track_number:
        return put_counted(info, {"TRACKNUMBER", "TRACK"}, NumberStyle::two_digits, sink);
    case plain_track_number:
        return put_counted(info, {"TRACKNUMBER", "TRACK"}, NumberStyle::plain, sink);
    case total_tracks:
        return put_total(info, {"TOTALTRACKS", "TRACKTOTAL"}, {"TRACKNUMBER", "TRACK"}, sink);
    case disc_number:
        return put_counted(info, {"DISCNUMBER", "DISC"}, NumberStyle::plain, sink);
    case total_discs:
        return put_total(info, {"TOTALDISCS", "DISCTOTAL"}, {"DISCNUMBER", "DISC"}, sink);
    case date:
        return put_first_field(info, {"DATE", "YEAR"}, sink);
    case year:
        return put_year(info, sink);
    case length:
        return put_length(info.length(), sink);
    case length_seconds:
        return put_length_seconds(info.length(), sink);
    case codec:
        return put_codec(sources, sink);
    case bitrate:
    case samplerate:
    case channels:
    case bits_per_sample:
    case codec_profile:
    case encoding:
    case tool:
    case tag_type:
        return put_technical(info, name, sink);
    case track_gain:
        return put_gain(info, name, info.replay_gain().track_gain, sink);
    case track_peak:
        return put_peak(info, name, info.replay_gain().track_peak, sink);
    case album_gain:
        return put_gain(info, name, info.replay_gain().album_gain, sink);
    case album_peak:
        return put_peak(info, name, info.replay_gain().album_peak, sink);
    case file_name:
    case file_name_extension:
    case extension:
    case directory_name:
    case parent_directory_name:
    case directory_path:
    case path:
        return put_of_path(field, sources.track.path(), sink);
    case subsong:
        return put_number(sources.track.subsong(), sink);
    case file_size:
    case file_size_natural:
    case last_modified:
        return put_file_stats(field, sources.track, sink);
    case loop_value:
        if (sources.loop_count > 0)
            sink.put(sources.loop_value);
        return sources.loop_count > 0;
    case loop_count:
        return sources.loop_count > 0 && put_number(sources.loop_count, sink);
    }
    return false;
}

} // namespace vantaro::core
