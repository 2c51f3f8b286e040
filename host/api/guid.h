// Identifiers of service classes, action kinds, configuration variables and menu commands.
//
//     constexpr Guid kind = guid("{C3DCFE2F-16F4-48B9-B0C4-961470019784}");   // a typing error does not
//     compile std::string text = to_text(kind);                                       // the same form again
//
// In memory and in files a GUID is 16 bytes: one 32-bit and two 16-bit little-endian numbers, then eight
// bytes as they stand. Every function here may be called from any thread.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantaro {

struct Guid {
    std::array<std::uint8_t, 16> bytes{};

    /// Orders by the bytes, each unsigned, in memory order.
    friend constexpr auto operator<=>(const Guid&, const Guid&) = default;
};
static_assert(sizeof(Guid) == 16);

namespace detail {

/// Position in Guid::bytes of the n-th byte that the text form names, from left to right.
inline constexpr std::array<std::size_t, 16> guid_text_order{3, 2, 1,  0,  5,  4,  7,  6,
                                                             8, 9, 10, 11, 12, 13, 14, 15};

constexpr int hex_digit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

} // namespace detail

/// Reads the form "{8-4-4-4-12 hexadecimal digits}", letters in either case; nothing when the text is not
/// one.
constexpr std::optional<Guid> parse_guid(std::string_view text) {
    if (text.size() != 38 || text.front() != '{' || text.back() != '}')
        return std::nullopt;
    Guid result;
    std::size_t at = 1;
    for (std::size_t n = 0; n < 16; ++n) {
        if (n == 4 || n == 6 || n == 8 || n == 10) {
            if (text[at] != '-')
                return std::nullopt;
            ++at;
        }
        const int high = detail::hex_digit(text[at]);
        const int low = detail::hex_digit(text[at + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        result.bytes[detail::guid_text_order[n]] = static_cast<std::uint8_t>(high * 16 + low);
        at += 2;
    }
    return result;
}

/// A GUID constant, checked while compiling.
consteval Guid guid(std::string_view text) {
    return parse_guid(text).value();
}

/// The form that parse_guid reads, letters in upper case.
inline std::string to_text(const Guid& id) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text = "{";
    for (std::size_t n = 0; n < 16; ++n) {
        if (n == 4 || n == 6 || n == 8 || n == 10)
            text += '-';
        const std::uint8_t byte = id.bytes[detail::guid_text_order[n]];
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text += '}';
}

} // namespace vantaro
