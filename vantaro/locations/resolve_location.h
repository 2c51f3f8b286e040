// What a location of the command line stands for: the audio files behind a file, a folder or a playlist.
//
//     const ResolvedLocation found = resolve_location("/m/Album", is_audio_file, is_aborting);
//     for (const std::string& path : found.paths) ...
//     for (const std::string& line : found.problems) ...    // "/m/Album/old: Access denied"
//
// A location is a path or a "file://" URL. Paths are bytes and need not be UTF-8. Results are absolute and
// without "." and ".."; links stay in them, except in a path that was given with "..".
//   - A file gives itself, whatever it holds, unless it is a playlist, or its extension is one that no music
//   has.
//   - A folder gives the audio files in it and its sub-folders: the files of a folder come first, then its
//     sub-folders one after the other, both in natural order of their names (compare_natural). Playlists in
//     it are passed over. Links are followed.
//   - A playlist (M3U, M3U8, PLS, CUE, by the extension) gives what its entries give, in their order; they
//   are
//     files, folders and further playlists.
// Every folder is walked once and every playlist read once for a location, however many links or entries lead
// there: the second way to a folder gives nothing, the second entry for a playlist is a problem.
//
// Any thread; the functions handed in are called on the thread of the caller.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core {

struct ResolvedLocation {
    std::vector<std::string> paths;
    /// What was left out, one line each, that names the path.
    std::vector<std::string> problems;
    /// Files that were named and are no music by their extension: "folder.jpg". No problem is listed for
    /// them.
    std::vector<std::string> passed_over;
};

/// One line for people about files that were passed over. Requires: paths is not empty.
std::string passed_over_line(const std::vector<std::string>& paths);

/// How much is taken from playlists, which may come from anywhere.
struct LocationLimits {
    /// Size of one playlist in bytes.
    std::size_t playlist_size = std::size_t{64} * 1024 * 1024;
    /// Playlists within playlists.
    std::size_t playlist_depth = 16;
    /// Entries of all playlists together.
    std::size_t playlist_entries = 1'000'000;
    /// Problem lines; one more tells how many are not listed.
    std::size_t problems = 1000;
};

/// `is_audio_file` decides by the path which files count; a file that is named counts without an extension,
/// too. `is_aborting` is asked for every folder
/// and every entry. Both are callable.
/// Throws, all for the location itself (what() does not name it): vantaro_io::exception_io_not_found;
/// exception_io_denied; exception_io_no_handler_for_path for an empty text, a NUL in it, other URLs, and what
/// is neither file nor folder; exception_io_data for a playlist that is too large or not a text; exception_io
/// for other failures. vantaro_io::exception_aborted as soon as is_aborting returns true.
ResolvedLocation resolve_location(std::string_view location,
                                  const std::function<bool(std::string_view path)>& is_audio_file,
                                  const std::function<bool()>& is_aborting,
                                  const LocationLimits& limits = {});

} // namespace vantaro::core
