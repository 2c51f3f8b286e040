// The place of an MP4 file's item list, with the free space beside it.
//
//     const Mp4Room room = make_mp4_room(stream, list.size());
//     write_mp4_list(stream, room, list);
//
// One thread at a time on a stream.
#pragma once

#include <tiostream.h>

#include <cstddef>
#include <optional>
#include <string_view>

namespace vantaro::core::tags {

/// The item list and the "free" atoms directly beside it, as places in the file.
struct Mp4Room {
    std::size_t start = 0;
    std::size_t list_end = 0; ///< behind it is nothing but free space
    std::size_t end = 0;

    std::size_t size() const { return end - start; }
};

/// Room for an item list of `needed` bytes with its header, as padding.h says. When there is not enough, or
/// no list, the file grows: all sizes and offsets in it are then right, but only write_mp4_list makes the
/// room an item list again. Throws before anything is changed: exception_io_data when the present list
/// reaches beyond the atom that holds it, or what has to move is damaged, and exception_io when it cannot
/// move.
Mp4Room make_mp4_room(TagLib::IOStream& stream, std::size_t needed);

/// Writes the atom `list` at the start of the room and one free atom over the rest of it.
void write_mp4_list(TagLib::IOStream& stream, const Mp4Room& room, std::string_view list);

} // namespace vantaro::core::tags
