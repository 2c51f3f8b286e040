// Cue sheets as files beside a track.
//
//     std::string text = read_cue_text(path, abort);
#pragma once

#include "host/api/abort_flag.h"

#include <string>
#include <string_view>

namespace quorvex {

/// The largest file that is read, in bytes.
inline constexpr std::uint64_t largest_cue_file = 0x8000000;

/// The cue file that belongs to a track's file: its path with the extension replaced ("a.flac" gives
/// "a.cue"), or added where the file name has none.
std::string cue_path_of(std::string_view track_path);

/// The text of a cue file, as UTF-8, up to its first NUL. A file with a mark is in UTF-8 or UTF-16, as the
/// mark says; one that is UTF-8 all through is taken as such; any other is in the host's legacy code page.
/// Throws: vantaro_io::exception_io_not_found, vantaro_io::exception_io_data for a file that is too large,
/// and what opening and reading throw.
std::string read_cue_text(const std::string& path, vantaro::AbortFlag& abort);

} // namespace quorvex
