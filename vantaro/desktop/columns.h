// The columns of the track list: what each shows of a track, and what it is sorted by.
//
//     const ColumnInfo& info = column_info(Column::title);        // "Title", from TITLE
//     QString text = cell_text(Column::title, track);
//     SortKey key = sort_key(Column::track_number, track);        // 3 for "03/12"
//
// Everything is read from what the host holds of the track. Any thread.
#pragma once

#include "vantaro/tracks/track_table.h"

#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace vantaro::core {

enum class Column : std::uint8_t {
    title,
    artist,
    album,
    track_number,
    disc_number,
    date,
    genre,
    album_artist,
    length,
    file_name,
    folder,
    format,
    comment,
};

inline constexpr std::size_t column_count = 13;

struct ColumnInfo {
    Column column;
    /// By which the window's own file knows the column.
    const char* id;
    const char* heading;
    /// The metadata field that is shown; nullptr where it is none.
    const char* field;
    /// Shown at the right edge and sorted by its number.
    bool is_number;
    bool is_visible_at_first;
    /// In characters.
    int width;
};

const ColumnInfo& column_info(Column column);

/// In the order in which they stand at first.
const std::array<ColumnInfo, column_count>& all_columns();

/// What the cell shows, on one line: all values of the field, joined by "; ". Without held tags only the file
/// name and the folder have a text.
QString cell_text(Column column, const Track& track);

/// What a cell is sorted by. A cell that shows nothing stands before all others.
struct SortKey {
    double number = 0;
    std::string text;
};

SortKey sort_key(Column column, const Track& track);

/// Stands behind a number and its heading, between it and the column at its right.
inline constexpr QChar number_margin(0x2002);

/// "3:07", "1:02:45".
QString duration_text(double seconds);

} // namespace vantaro::core
