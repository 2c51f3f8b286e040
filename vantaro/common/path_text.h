// Paths as texts. A path is bytes, which need not be UTF-8; wherever people read it, or a value is made of
// it, it is the same text.
//
//     set_path_code_page("windows-1252");
//     path_as_text("/music/caf\xE9.flac")      // "/music/caf\u00E9.flac"
//
// Any thread.
#pragma once

#include <string>
#include <string_view>

namespace vantaro::core {

/// What names that are not UTF-8 are in, from now on; Windows-1252 at first.
/// Throws: vantaro_io::exception_io for a name that no character set has.
void set_path_code_page(const std::string& name);

/// The path in UTF-8. Each name in it is taken for itself: one that is UTF-8 stays as it is, any other is
/// converted; bytes that mean nothing become U+FFFD.
std::string path_as_text(std::string_view path);

} // namespace vantaro::core
