// Matching a text against a pattern with placeholders.
//
//     match_placeholders("%1 - %2", "Tidewright - Slack Water", PlaceholderStyle::numbered)
//         // [1] "Tidewright", [2] "Slack Water"
//
// Any thread.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vantaro::core {

enum class PlaceholderStyle : std::uint8_t {
    numbered, // "%1" to "%9"
    named,    // "%name%"; what they stand for is not told
};

/// What each placeholder stands for, by its number. Each stands for one byte at least, and for as few as
/// possible; all else stands for itself. Nothing when the text does not fit.
std::optional<std::array<std::string_view, 10>>
match_placeholders(std::string_view pattern, std::string_view text, PlaceholderStyle style);

} // namespace vantaro::core
