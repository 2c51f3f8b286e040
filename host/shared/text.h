// UTF-8 texts without regard to case: compared one code point at a time, each after its simple lower-case
// mapping (Unicode's, as ICU has it; code points from 65536 up stay as they are).
//
//     if (stricmp_utf8(name, "Rock") == 0) ...
//     if (stricmp_utf8_partial(argument, "/tag:") == 0) ...       // begins with
//
// Bytes that are not UTF-8 compare as themselves, above every code point, so the order stays total. Any
// thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex {

/// Less than, equal to or greater than 0 as `a` sorts before, with or behind `b`.
int stricmp_utf8(const char* a, const char* b);
/// The same with lengths in bytes.
int stricmp_utf8_ex(const char* a, std::size_t a_length, const char* b, std::size_t b_length);
/// 0 when `text` begins with `prefix`; otherwise as the beginning of `text` sorts against `prefix`.
int stricmp_utf8_partial(const char* text, const char* prefix);

/// The order of a list that people read, alphabetical for no language in particular, numbers by their value:
/// less than, equal to or greater than 0. A total order: only equal bytes compare equal.
int compare_alphabetical(std::string_view a, std::string_view b);

/// The lower-case mapping that the comparisons use.
char32_t uCharLower(char32_t code_point);

/// Append the full upper-case or lower-case form of `text` (not depending on a language).
void uAddStringUpper(std::string& out, std::string_view text);
void uAddStringLower(std::string& out, std::string_view text);
/// Appends `text` with every `from` replaced by `to`; both are ASCII.
void uReplaceCharAdd(std::string& out, std::string_view text, char from, char to);

/// Takes the first character off `text`: its code point, or for a byte that is not UTF-8, that byte plus
/// `invalid_byte_base`.
inline constexpr char32_t invalid_byte_base = 0x110000;
char32_t take_character(std::string_view& text);

/// Whether all of the text is UTF-8.
bool is_utf8(std::string_view text);
/// The text as UTF-8, from a character set that ICU knows by this name; what it cannot hold becomes U+FFFD.
/// Throws: vantaro_io::exception_io for an unknown name.
std::string to_utf8(std::string_view bytes, const char* character_set);

/// Keeps the first `count` characters and appends " (...)", also when the text has exactly `count`; a shorter
/// text stays as it is.
std::string limit_text(std::string_view text, std::size_t count);
/// Cuts the text before its first line break, if it has one, and appends " (...)".
std::string first_line(std::string text);

} // namespace quorvex
