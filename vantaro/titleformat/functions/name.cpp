#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/characters.h"

#include <array>
#include <optional>

namespace vantaro::core::functions {

namespace {

constexpr auto npos = std::string_view::npos;

bool equal_ignoring_case(std::string_view a, std::string_view b) {
    return folded_case(a) == folded_case(b);
}

/// How many bytes the article takes that the text begins with; 0 when it begins with none. The articles are
/// the arguments from the second one on, or else the English ones.
std::size_t article_size(const Call& call, std::string_view text) {
    constexpr auto english = std::to_array<std::string_view>({"The", "A", "An"});
    const std::size_t count = call.count() > 1 ? call.count() - 1 : english.size();
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view article = call.count() > 1 ? call.text(i + 1) : english[i];
        const std::string_view start = first_characters(text, count_characters(article));
        const std::string_view rest = text.substr(start.size());
        if (!article.empty() && equal_ignoring_case(start, article)
            && without_leading_blanks(rest).size() < rest.size() && !trimmed(rest).empty())
            return start.size();
    }
    return 0;
}

struct Brackets {
    std::string_view opening;
    std::string_view closing;
};
constexpr auto bracket_kinds = std::to_array<Brackets>({{"(", ")"},
                                                        {"[", "]"},
                                                        {"~", "~"},
                                                        {"-", "-"},
                                                        {"\xEF\xBC\x88", "\xEF\xBC\x89"}, // full-width
                                                        {"\xE3\x80\x8C", "\xE3\x80\x8D"}});

struct Bracketed {
    std::string_view before;
    std::string_view content;
};

/// The bracketed part at the very end of the text.
std::optional<Bracketed> bracketed_end(std::string_view text) {
    text = without_trailing_blanks(text);
    for (const Brackets& kind : bracket_kinds) {
        if (!text.ends_with(kind.closing))
            continue;
        const std::string_view inside = text.substr(0, text.size() - kind.closing.size());
        // Brackets of the same kind within it belong to it.
        std::size_t depth = 1;
        for (std::size_t end = inside.size(); end > 0;) {
            const Character character = character_before(inside, end);
            end -= character.bytes.size();
            if (character.bytes == kind.opening && --depth == 0)
                return Bracketed{without_trailing_blanks(inside.substr(0, end)),
                                 inside.substr(end + kind.opening.size())};
            if (character.bytes == kind.closing && kind.closing != kind.opening)
                ++depth;
        }
    }
    return std::nullopt;
}

struct Guests {
    std::string_view before;
    std::string_view names;
    std::string_view behind;
};

/// Where "feat." and its like stand as a word of their own, in brackets or not.
std::optional<Guests> find_guests(std::string_view text) {
    constexpr auto words =
        std::to_array<std::string_view>({"feat.", "feat", "featuring", "ft.", "ft", "with"});
    bool is_start = true;
    char bracket = '\0';
    std::size_t bracket_at = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        const Character character = take_character(text, at);
        if (is_start && start > 0)
            for (const std::string_view word : words) {
                const std::string_view rest = text.substr(start);
                if (!equal_ignoring_case(rest.substr(0, word.size()), word))
                    continue;
                const std::string_view names = without_leading_blanks(rest.substr(word.size()));
                if (names.empty() || names.size() == rest.size() - word.size())
                    continue;
                // Alone in brackets they go with them; otherwise they reach to the end.
                if (bracket != '\0' && bracket_at + 1 == start) {
                    const std::size_t close = names.find(bracket == '(' ? ')' : ']');
                    if (close != npos)
                        return Guests{without_trailing_blanks(text.substr(0, bracket_at)),
                                      trimmed(names.substr(0, close)), names.substr(close + 1)};
                }
                return Guests{without_trailing_blanks(text.substr(0, start)), trimmed(names), {}};
            }
        is_start = character.is_blank() || character.code_point == '(' || character.code_point == '[';
        if (character.code_point == '(' || character.code_point == '[') {
            bracket = text[start];
            bracket_at = start;
        }
    }
    return std::nullopt;
}

} // namespace

void delprefix(Call& call) {
    const std::string_view text = trimmed(call.text(0));
    call.out().append(without_leading_blanks(text.substr(article_size(call, text))));
}

void swapprefix(Call& call) {
    const std::string_view text = trimmed(call.text(0));
    const std::size_t size = article_size(call, text);
    call.out().append(without_leading_blanks(text.substr(size)));
    if (size > 0) {
        call.out().append(", ");
        call.out().append(text.substr(0, size));
    }
}

void bracketed(Call& call) {
    if (const auto found = bracketed_end(call.text(0)))
        call.out().append(found->content);
}

void unbracketed(Call& call) {
    const auto found = bracketed_end(call.text(0));
    call.out().append(found ? found->before : call.text(0));
}

void guests(Call& call) {
    const auto found = find_guests(call.text(0));
    if (!found)
        return;
    constexpr auto separators = std::to_array<std::string_view>({", ", " & ", " and ", "; ", " / "});
    std::string_view rest = found->names;
    while (!rest.empty()) {
        std::size_t end = rest.size();
        std::size_t next = rest.size();
        // The nearest of them; the names of one track are few.
        for (const std::string_view separator : separators)
            if (const std::size_t at = rest.substr(0, end).find(separator); at != npos) {
                end = at;
                next = at + separator.size();
            }
        call.charge(rest.size());
        if (const std::string_view name = trimmed(rest.substr(0, end)); !name.empty())
            call.put_value(name);
        rest.remove_prefix(next);
    }
}

void noguests(Call& call) {
    const auto found = find_guests(call.text(0));
    call.out().append(found ? found->before : call.text(0));
    if (found)
        call.out().append(found->behind);
}

void splitsmart(Call& call) {
    const std::string_view text = call.text(0);
    const std::size_t first = text.find_first_of("/&,");
    const char separator = first == npos ? '\0' : text[first];
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = first == npos ? text.size() : std::min(text.find(separator, at), text.size());
        if (const std::string_view piece = trimmed(text.substr(at, end - at)); !piece.empty())
            call.put_value(piece);
        at = end + 1;
    }
}

} // namespace vantaro::core::functions
