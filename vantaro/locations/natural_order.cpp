#include "vantaro/locations/natural_order.h"

#include "vantaro/common/utf8.h"

#include <unicode/uchar.h>

namespace vantaro::core {

namespace {

/// What is compared at once: a lower-cased character, or a number.
struct Token {
    std::int32_t code_point = 0;
    std::string_view digits; // of a number, without its leading zeros
    std::size_t leading_zeros = 0;

    std::strong_ordering operator<=>(const Token& other) const {
        if (const auto order = code_point <=> other.code_point; order != 0)
            return order;
        // Without leading zeros the longer number is the greater one.
        if (const auto order = digits.size() <=> other.digits.size(); order != 0)
            return order;
        return digits <=> other.digits;
    }
};

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

Token next_token(std::string_view text, std::size_t& at) {
    if (!is_digit(text[at])) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const std::optional<std::int32_t> code_point = next_code_point(text, at);
        return {.code_point = code_point ? u_tolower(*code_point) : byte, .digits = {}};
    }
    const std::size_t start = at;
    while (at < text.size() && text[at] == '0')
        ++at;
    const std::size_t significant = at;
    while (at < text.size() && is_digit(text[at]))
        ++at;
    return {.code_point = '0',
            .digits = text.substr(significant, at - significant),
            .leading_zeros = significant - start};
}

} // namespace

std::strong_ordering compare_natural(std::string_view a, std::string_view b) {
    auto zeros = std::strong_ordering::equal;
    std::size_t at_a = 0;
    std::size_t at_b = 0;
    while (at_a < a.size() && at_b < b.size()) {
        const Token token_a = next_token(a, at_a);
        const Token token_b = next_token(b, at_b);
        if (const auto order = token_a <=> token_b; order != 0)
            return order;
        if (zeros == 0)
            zeros = token_a.leading_zeros <=> token_b.leading_zeros;
    }
    // At most one of them has something left, and that is the greater one.
    if (const auto order = (a.size() - at_a) <=> (b.size() - at_b); order != 0)
        return order;
    if (zeros != 0)
        return zeros;
    return a <=> b;
}

} // namespace vantaro::core
