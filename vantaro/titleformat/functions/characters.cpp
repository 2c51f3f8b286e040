#include "vantaro/titleformat/functions/characters.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>

#include <algorithm>
#include <cstring>

namespace vantaro::core {

Character character_before(std::string_view text, std::size_t end) {
    // A well-formed sequence is at most four bytes long and ends where it should, or the byte stands alone.
    for (std::size_t length = std::min<std::size_t>(4, end); length > 1; --length) {
        std::size_t at = end - length;
        const Character character = take_character(text, at);
        if (at == end)
            return character;
    }
    std::size_t at = end - 1;
    return take_character(text, at);
}

std::size_t count_characters(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); ++count)
        take_character(text, at);
    return count;
}

std::string_view first_characters(std::string_view text, std::uint64_t count) {
    std::size_t at = 0;
    for (; count > 0 && at < text.size(); --count)
        take_character(text, at);
    return text.substr(0, at);
}

std::string_view skip_characters(std::string_view text, std::uint64_t count) {
    return text.substr(first_characters(text, count).size());
}

std::uint64_t position_within(std::int64_t position, std::uint64_t size) {
    if (position >= 0)
        return std::min(static_cast<std::uint64_t>(position), size);
    const std::uint64_t from_end = ~static_cast<std::uint64_t>(position) + 1;
    return from_end > size ? 0 : size - from_end;
}

std::string_view without_leading_blanks(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t start = at;
        if (!take_character(text, at).is_blank())
            return text.substr(start);
    }
    return {};
}

std::string_view without_trailing_blanks(std::string_view text) {
    while (!text.empty()) {
        const Character last = character_before(text, text.size());
        if (!last.is_blank())
            break;
        text.remove_suffix(last.bytes.size());
    }
    return text;
}

std::size_t find_text(std::string_view text, std::string_view needle, std::size_t start) {
    if (start > text.size())
        return std::string_view::npos;
    if (needle.empty())
        return start;
    // Most are short, and then the plain way is fast; it takes the product of the sizes.
    constexpr std::size_t longest_short = 16;
    if (needle.size() <= longest_short)
        return text.find(needle, start);
    const void* found = memmem(text.data() + start, text.size() - start, needle.data(), needle.size());
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data())
                 : std::string_view::npos;
}

std::string folded_case(std::string_view text) {
    std::string folded;
    icu::StringByteSink<std::string> sink(&folded, static_cast<std::int32_t>(text.size()));
    UErrorCode error = U_ZERO_ERROR;
    icu::CaseMap::utf8Fold(0, icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())), sink,
                           nullptr, error);
    return U_SUCCESS(error) ? folded : std::string(text);
}

} // namespace vantaro::core
