// Locations as texts: "file://" URLs, paths in full, and how a path is shown in a message. Any thread.
#pragma once

#include <string>
#include <string_view>

namespace vantaro::core {

/// Whether the text starts with the prefix, ASCII letters of either case alike. `prefix` is in lower case.
bool starts_with_ignoring_case(std::string_view text, std::string_view prefix);

/// Whether the text starts with a scheme and "://".
bool is_url(std::string_view location);

/// The path that a "file://" URL names, percent-decoded; the host is empty or "localhost". A percent sign
/// that no two hexadecimal digits follow stands for itself. Throws:
/// vantaro_io::exception_io_no_handler_for_path for other URLs, and for a NUL in the path.
std::string path_of_url(std::string_view url);

/// The path in full, without "." and ".."; a relative one is taken from `folder`. Links are resolved only in
/// a path with "..".
std::string full_path(std::string_view path, std::string_view folder);

/// The path as part of a one-line message: control characters are escaped, and very long ones shortened.
std::string shown(std::string_view path);

} // namespace vantaro::core
