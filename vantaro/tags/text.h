// Texts as tags store them, and the UTF-8 without NUL that fields are made of.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TagLib {
class String;
} // namespace TagLib

namespace vantaro::core::tags {

using Values = std::vector<std::string>;

/// The numbers are those of ID3v2.
enum class TextEncoding : unsigned char { latin1 = 0, utf16 = 1, utf16be = 2, utf8 = 3 };

/// ASCII letters become capitals.
std::string upper_name(std::string_view name);

bool is_ascii(std::string_view text);
/// Bytes that are no UTF-8 become U+FFFD; what follows a NUL is cut off.
std::string clean_text(std::string_view utf8);
/// clean_text, but a text that is no UTF-8 at all is taken for Latin-1.
std::string utf8_or_latin1(std::string_view bytes);
std::string from_latin1(std::string_view bytes);
/// Nothing when a character does not fit.
std::optional<std::string> to_latin1(std::string_view utf8);

/// The strings between the NULs, empty ones too; a NUL at the end is a terminator, not an empty string.
Values decode_strings(std::string_view bytes, TextEncoding encoding);
/// Separated by NUL, no terminator. Every UTF-16 string has its byte order mark.
std::string encode_strings(const Values& strings, TextEncoding encoding);
/// The NUL of that encoding.
std::string_view terminator(TextEncoding encoding);

std::string from_taglib(const TagLib::String& text);
TagLib::String to_taglib(std::string_view utf8);

} // namespace vantaro::core::tags
