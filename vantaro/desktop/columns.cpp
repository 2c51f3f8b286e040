#include "vantaro/desktop/columns.h"

#include "vantaro/common/path_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace vantaro::core {

namespace {

constexpr std::array<ColumnInfo, column_count> columns{{
    {Column::title, "title", "Title", "TITLE", false, true, 34},
    {Column::artist, "artist", "Artist", "ARTIST", false, true, 26},
    {Column::album, "album", "Album", "ALBUM", false, true, 26},
    {Column::track_number, "track", "Track", "TRACKNUMBER", true, true, 6},
    {Column::disc_number, "disc", "Disc", "DISCNUMBER", true, false, 6},
    {Column::date, "date", "Date", "DATE", false, true, 13},
    {Column::genre, "genre", "Genre", "GENRE", false, true, 17},
    {Column::album_artist, "album_artist", "Album artist", "ALBUMARTIST", false, false, 22},
    {Column::length, "length", "Length", nullptr, true, true, 9},
    {Column::file_name, "file_name", "File name", nullptr, false, true, 34},
    {Column::folder, "folder", "Folder", nullptr, false, false, 30},
    {Column::format, "format", "Format", nullptr, false, true, 10},
    {Column::comment, "comment", "Comment", "COMMENT", false, false, 24},
}};

constexpr bool stand_in_order() {
    for (std::size_t i = 0; i < columns.size(); ++i)
        if (static_cast<std::size_t>(columns[i].column) != i)
            return false;
    return true;
}
static_assert(stand_in_order());

/// No cell is wide enough for more, and lyrics in a comment would be laid out in full each time it is
/// painted.
constexpr std::size_t most_shown = 400;

std::string_view file_name(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

std::string_view folder(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? path.substr(0, 1) : path.substr(0, slash == path.npos ? 0 : slash);
}

std::string field_text(const char* field, const TrackInfo& info) {
    const std::size_t index = info.find_field(field);
    std::string text;
    for (std::size_t i = 0; index != no_field && i < info.value_count(index); ++i)
        text.append(i == 0 ? "" : "; ").append(info.value(index, i));
    return text;
}

std::string format_text(const TrackInfo& info, std::string_view path) {
    if (const std::size_t codec = info.find_technical("codec"); codec != no_field)
        return info.technical_value(codec);
    const std::string_view name = file_name(path);
    const std::size_t dot = name.rfind('.');
    return dot == name.npos ? std::string() : std::string(name.substr(dot + 1));
}

std::string text_of_cell(Column column, const Track& track) {
    if (column == Column::file_name)
        return std::string(file_name(path_as_text(track.path())));
    if (column == Column::folder)
        return std::string(folder(path_as_text(track.path())));
    const Ref<HeldInfo> held = track.held();
    if (!held)
        return {};
    if (column == Column::format)
        return format_text(held->info(), track.path());
    return field_text(column_info(column).field, held->info());
}

double length_of(const Track& track) {
    const Ref<HeldInfo> held = track.held();
    return held ? held->info().length() : 0;
}

/// The number that the text begins with; nothing smaller than it stands for a text without one.
double leading_number(std::string_view text) {
    const std::size_t digit = text.find_first_not_of(' ');
    unsigned long long number = 0;
    const std::string_view rest = digit == text.npos ? std::string_view() : text.substr(digit);
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    return error == std::errc() ? static_cast<double>(number) : -1;
}

} // namespace

const ColumnInfo& column_info(Column column) {
    return columns[static_cast<std::size_t>(column)];
}

const std::array<ColumnInfo, column_count>& all_columns() {
    return columns;
}

QString cell_text(Column column, const Track& track) {
    if (column == Column::length) {
        const double seconds = length_of(track);
        return seconds > 0 ? duration_text(seconds) : QString();
    }
    const std::string text = text_of_cell(column, track);
    QString shown = QString::fromUtf8(text.data(), static_cast<qsizetype>(std::min(text.size(), most_shown)));
    std::ranges::replace_if(
        shown, [](QChar c) { return c.category() == QChar::Other_Control || c == QChar::LineSeparator; },
        QChar(u' '));
    return shown;
}

SortKey sort_key(Column column, const Track& track) {
    if (column == Column::length)
        return {length_of(track), {}};
    std::string text = text_of_cell(column, track);
    if (!column_info(column).is_number)
        return {0, std::move(text)};
    if (text.empty())
        return {-2, {}};
    return {leading_number(text), std::move(text)};
}

QString duration_text(double seconds) {
    // What files claim is anybody's guess.
    constexpr double longest = 1e9;
    const auto total = static_cast<long long>(std::clamp(std::round(seconds), 0.0, longest));
    const QString tail = QStringLiteral(":%1").arg(total % 60, 2, 10, QChar(u'0'));
    if (total < 3600)
        return QString::number(total / 60) + tail;
    return QStringLiteral("%1:%2").arg(total / 3600).arg(total / 60 % 60, 2, 10, QChar(u'0')) + tail;
}

} // namespace vantaro::core
