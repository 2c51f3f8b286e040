#include "vantaro/titleformat/functions/placeholder.h"

#include "vantaro/titleformat/functions/characters.h"
#include "vantaro/titleformat/functions/number_text.h"

namespace vantaro::core {

namespace {

constexpr auto npos = std::string_view::npos;

struct Placeholder {
    std::size_t number = 0;
    std::size_t start = npos; // in the pattern; npos when there is none
    std::size_t end = npos;
};

Placeholder next_placeholder(std::string_view pattern, std::size_t from, PlaceholderStyle style) {
    for (std::size_t at = from; (at = pattern.find('%', at)) != npos; ++at) {
        if (style == PlaceholderStyle::numbered) {
            if (at + 1 < pattern.size() && is_ascii_digit(pattern[at + 1]))
                return {static_cast<std::size_t>(pattern[at + 1] - '0'), at, at + 2};
            continue;
        }
        const std::size_t end = pattern.find('%', at + 1);
        return end == npos ? Placeholder{} : Placeholder{0, at, end + 1};
    }
    return {};
}

} // namespace

std::optional<std::array<std::string_view, 10>>
match_placeholders(std::string_view pattern, std::string_view text, PlaceholderStyle style) {
    std::array<std::string_view, 10> pieces{};
    Placeholder placeholder = next_placeholder(pattern, 0, style);
    const std::string_view head = pattern.substr(0, placeholder.start);
    if (!text.starts_with(head))
        return std::nullopt;
    std::size_t at = head.size();
    if (placeholder.start == npos)
        return at == text.size() ? std::optional(pieces) : std::nullopt;
    // The shortest piece each is enough: what fits with a longer one fits with it as well, because the next
    // placeholder takes what is left.
    while (placeholder.start != npos) {
        const Placeholder next = next_placeholder(pattern, placeholder.end, style);
        const std::string_view between = pattern.substr(placeholder.end, next.start - placeholder.end);
        if (at >= text.size())
            return std::nullopt;
        std::size_t end = npos;
        if (next.start != npos)
            end = find_text(text, between, at + 1);
        else if (text.ends_with(between) && text.size() - between.size() > at)
            end = text.size() - between.size();
        if (end == npos)
            return std::nullopt;
        pieces[placeholder.number] = text.substr(at, end - at);
        at = end + between.size();
        placeholder = next;
    }
    return pieces;
}

} // namespace vantaro::core
