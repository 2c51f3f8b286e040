// Numbers in texts. Blanks around a number do not count; nothing else may stand beside it.
//
// Any thread.
#pragma once

#include <charconv>
#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

namespace vantaro::core {

inline bool is_ascii_digit(char c) {
    return c >= '0' && c <= '9';
}

inline bool is_ascii_letter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

inline std::string_view without_blanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t start = text.find_first_not_of(blanks);
    return start == std::string_view::npos ? std::string_view()
                                           : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

/// A whole number with or without a sign, within 64 bits.
inline std::optional<std::int64_t> parse_integer(std::string_view text) {
    text = without_blanks(text);
    if (text.size() > 1 && text.front() == '+' && is_ascii_digit(text[1]))
        text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// A whole or decimal number with or without a sign, without exponent.
inline std::optional<double> parse_decimal(std::string_view text) {
    text = without_blanks(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    // Words such as "inf" are no numbers here.
    if (text.find_first_not_of("-.0123456789") != std::string_view::npos)
        return std::nullopt;
    double number = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

/// By number when both are numbers, else by code point.
inline std::partial_ordering compare_texts(std::string_view a, std::string_view b) {
    const std::optional<std::int64_t> whole_a = parse_integer(a);
    const std::optional<std::int64_t> whole_b = parse_integer(b);
    if (whole_a && whole_b)
        return *whole_a <=> *whole_b;
    const std::optional<double> number_a = parse_decimal(a);
    const std::optional<double> number_b = parse_decimal(b);
    if (number_a && number_b)
        return *number_a <=> *number_b;
    // UTF-8 sorts by its bytes as by its code points.
    return a <=> b;
}

} // namespace vantaro::core
