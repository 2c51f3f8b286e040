// Playlists as texts: which files are playlists, and what they name. Any thread.
//
//     if (const PlaylistFormat* format = playlist_format(path))
//         visit_entries(*format, text, [&](std::string_view entry) { ...; return true; });
//
// Formats: M3U and M3U8 (one entry a line, lines with '#' in front are none), PLS (File1=...) and CUE
// (FILE "..." WAVE).
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core {

struct PlaylistFormat {
    std::string_view extension;
    /// The entry in a line, empty when there is none.
    std::string_view (*entry_of)(std::string_view line);
    /// Whether entries are never in an older encoding.
    bool is_always_utf8;
    /// Whether an entry may be said again for the next of its parts, and counts once then.
    bool joins_repetitions;
};

/// In lower case, without the dot.
std::vector<std::string> playlist_extensions();
/// The format by the extension, in either case; nullptr when the file is no playlist.
const PlaylistFormat* playlist_format(std::string_view path);

/// Hands the entries to `visit` as they stand in the text, until it returns false. A byte-order mark and the
/// CR of CR LF do not count.
void visit_entries(const PlaylistFormat& format, std::string_view text,
                   const std::function<bool(std::string_view entry)>& visit);

/// The paths that an entry may mean, best guess first, never empty: as it stands; with backslashes as
/// separators; the same two from Windows-1252 when it is not UTF-8 and need not be. All in full, relative
/// entries from `folder`, the playlist's own.
/// Throws: vantaro_io::exception_io_no_handler_for_path for URLs other than "file://".
std::vector<std::string> paths_of_entry(const PlaylistFormat& format, std::string_view entry,
                                        std::string_view folder);

} // namespace vantaro::core
