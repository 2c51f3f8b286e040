// Parameter texts: the settings of an action in one text, each on a line of its own but for the last, which
// may have several.
//
//     std::vector<std::string> texts = split_settings(CopyValues::settings, "ARTIST\nPERFORMER");
//
// Any thread.
#pragma once

#include "ui/setting.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

/// Takes a parameter text apart, one text a setting; a case flag becomes "c" or "n".
/// Throws: vantaro_io::exception_io_data when the text is not of that form.
std::vector<std::string> split_settings(std::span<const Setting> settings, std::string_view parameters);
/// The other way. Requires: no line feed in one that is a line.
std::string join_settings(std::span<const std::string> texts);
/// Line feeds in settings that are one line become "|".
void replace_line_feeds(std::span<const Setting> settings, std::span<std::string> texts);

/// A case flag, and how descriptions say it.
inline bool is_case_sensitive(std::string_view flag) {
    return flag == "c";
}
inline const char* case_text(std::string_view flag) {
    return is_case_sensitive(flag) ? "case-sensitive" : "case-insensitive";
}

} // namespace quorvex
