// Texts as characters: code points, and bytes that are not UTF-8, each of which is a character of its own.
//
//     for (const Character& character : Characters(text))
//         if (character.is_letter()) ...
//
// Any thread.
#pragma once

#include "vantaro/common/utf8.h"

#include <unicode/uchar.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantaro::core {

struct Character {
    std::string_view bytes;
    std::int32_t code_point; // -1 for a byte that is not UTF-8

    bool is_letter() const { return code_point >= 0 && u_isalpha(code_point) != 0; }
    bool is_digit() const { return code_point >= 0 && u_isdigit(code_point) != 0; }
    bool is_blank() const { return code_point >= 0 && u_isUWhiteSpace(code_point) != 0; }
    /// A letter, a digit, or a mark on one.
    bool is_word() const {
        return is_letter() || is_digit()
               || (code_point >= 0 && (U_GET_GC_MASK(code_point) & U_GC_M_MASK) != 0);
    }
    bool is_apostrophe() const { return code_point == '\'' || code_point == '`' || code_point == 0x2019; }
};

/// The character that starts at `at`; moves `at` behind it. Requires: at < text.size().
inline Character take_character(std::string_view text, std::size_t& at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x80)
        return {text.substr(at++, 1), byte};
    const std::size_t start = at;
    const std::optional<std::int32_t> code_point = next_code_point(text, at);
    return {text.substr(start, at - start), code_point.value_or(-1)};
}

/// The last character before `end`. Requires: 0 < end <= text.size().
Character character_before(std::string_view text, std::size_t end);

/// The characters of a text, one after the other.
class Characters {
public:
    explicit Characters(std::string_view text) : text_(text) {}

    class Iterator {
    public:
        Iterator(std::string_view text, std::size_t at) : text_(text), at_(at) { read(); }
        const Character& operator*() const { return character_; }
        const Character* operator->() const { return &character_; }
        Iterator& operator++() {
            at_ += character_.bytes.size();
            read();
            return *this;
        }
        bool operator==(const Iterator& other) const { return at_ == other.at_; }

    private:
        void read() {
            std::size_t at = at_;
            if (at < text_.size())
                character_ = take_character(text_, at);
        }
        std::string_view text_;
        std::size_t at_;
        Character character_{};
    };
    Iterator begin() const { return {text_, 0}; }
    Iterator end() const { return {text_, text_.size()}; }

private:
    std::string_view text_;
};

std::size_t count_characters(std::string_view text);

/// The first `count` characters, or all when there are fewer.
std::string_view first_characters(std::string_view text, std::uint64_t count);
/// The text without its first `count` characters.
std::string_view skip_characters(std::string_view text, std::uint64_t count);

/// A position as people write it, negative from the end, brought within 0 and `size`.
std::uint64_t position_within(std::int64_t position, std::uint64_t size);

/// White space as Unicode has it, removed at the start, at the end.
std::string_view without_leading_blanks(std::string_view text);
std::string_view without_trailing_blanks(std::string_view text);
inline std::string_view trimmed(std::string_view text) {
    return without_trailing_blanks(without_leading_blanks(text));
}

/// Where `needle` starts in `text` at or behind `start`; npos when nowhere. In time that grows with the
/// sizes, not with their product.
std::size_t find_text(std::string_view text, std::string_view needle, std::size_t start = 0);

/// Texts that differ only in case become the same.
std::string folded_case(std::string_view text);

} // namespace vantaro::core
