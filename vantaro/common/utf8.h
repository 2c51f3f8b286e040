// Code points of texts that are probably UTF-8. Any thread.
//
//     std::size_t at = 0;
//     while (at < text.size())
//         use(next_code_point(text, at));
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vantaro::core {

/// Takes the code point that starts at `at` and moves `at` behind it; nothing, and one byte further, when no
/// well-formed sequence starts there. Requires: at < text.size().
std::optional<std::int32_t> next_code_point(std::string_view text, std::size_t& at);

/// Whether all of the text is well-formed UTF-8.
bool is_utf8(std::string_view text);

} // namespace vantaro::core
