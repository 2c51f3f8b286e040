// Parameter texts of kinds with several settings: one line a setting, in a fixed order.
//
//     const auto [name, value] = split_lines<2>(text);
//
// What reads them throws vantaro_io::exception_io_data when the text is not of that form.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace quorvex {

/// Line feeds become "|": a setting that is one line of a parameter text cannot hold any.
void replace_line_feeds(std::string& setting);

/// The text before the first line feed, and all the text after it.
std::pair<std::string_view, std::string_view> split_first_line(std::string_view text);

/// Whether the text is "c" (case-sensitive) or "n" (not).
bool read_case_flag(std::string_view text);
constexpr char case_flag(bool case_sensitive) {
    return case_sensitive ? 'c' : 'n';
}
/// How descriptions say it.
constexpr const char* case_text(bool case_sensitive) {
    return case_sensitive ? "case-sensitive" : "case-insensitive";
}

/// Throws vantaro_io::exception_io_data.
[[noreturn]] void reject_parameter_text();

/// A text of exactly `count` lines, taken apart.
template <std::size_t count>
std::array<std::string_view, count> split_lines(std::string_view text) {
    std::array<std::string_view, count> lines;
    for (std::size_t i = 0; i + 1 < count; ++i)
        std::tie(lines[i], text) = split_first_line(text);
    if (text.find('\n') != std::string_view::npos)
        reject_parameter_text();
    lines.back() = text;
    return lines;
}

/// Both settings as two lines; the settings themselves lose their line feeds for good.
std::string join_two_lines(std::string& first, std::string& second);

} // namespace quorvex
