// Puts an item list into an MP4 file, with all that has to change beside it.
#pragma once

#include "vantaro/tags/mp4/mp4_atoms.h"

namespace vantaro::core::tags {

/// What makes `items` the content of the file's item list: in its place, or in a new one, with room as
/// padding.h says. Reads the rest of `atoms` when the file has to grow. Throws exception_io_data when what
/// has to move is damaged, and exception_io when it cannot move.
FileEdit rewrite_mp4_list(Mp4Atoms& atoms, const std::vector<Part>& items);

} // namespace vantaro::core::tags
