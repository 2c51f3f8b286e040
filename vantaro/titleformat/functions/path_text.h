// The parts of a path. A slash at the end does not count.
//
//     file_stem("/music/a.b.flac")      // "a.b"
//     parent_path("/music/a.flac")      // "/music"
//
// Any thread.
#pragma once

#include <string_view>

namespace vantaro::core {

inline std::string_view without_trailing_slashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

/// What stands behind the last slash.
inline std::string_view file_base_name(std::string_view path) {
    path = without_trailing_slashes(path);
    return path == "/" ? std::string_view() : path.substr(path.rfind('/') + 1);
}

/// What stands before the last slash; "/" for what lies at the top, empty without a slash.
inline std::string_view parent_path(std::string_view path) {
    path = without_trailing_slashes(path);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos || path == "/")
        return {};
    return slash == 0 ? path.substr(0, 1) : without_trailing_slashes(path.substr(0, slash));
}

/// Where the extension with its dot begins in a name; a dot at the start of the name begins none.
inline std::size_t extension_start(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? name.size() : dot;
}

inline std::string_view file_stem(std::string_view path) {
    const std::string_view name = file_base_name(path);
    return name.substr(0, extension_start(name));
}

/// Without the dot; empty when there is none.
inline std::string_view file_extension(std::string_view path) {
    const std::string_view name = file_base_name(path);
    const std::size_t dot = extension_start(name);
    return dot < name.size() ? name.substr(dot + 1) : std::string_view();
}

} // namespace vantaro::core
