#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/characters.h"

namespace vantaro::core::functions {

namespace {

constexpr auto npos = std::string_view::npos;

void put_replaced(std::string_view text, std::string_view from, std::string_view to, TextBuffer& out) {
    std::size_t at = 0;
    if (!from.empty())
        for (std::size_t found; (found = find_text(text, from, at)) != npos; at = found + from.size()) {
            out.append(text.substr(at, found - at));
            out.append(to);
        }
    out.append(text.substr(at));
}

bool parts_words(std::string_view text, std::size_t at) {
    constexpr std::string_view separators = " ,.()![]";
    return at >= text.size() || separators.find(text[at]) != npos;
}

} // namespace

void replace(Call& call) {
    put_replaced(call.text(0), call.text(1), call.text(2), call.out());
}

void replaceword(Call& call) {
    const std::string_view text = call.text(0);
    const std::string_view from = call.text(1);
    std::size_t copied = 0;
    if (!from.empty())
        for (std::size_t at = 0; (at = find_text(text, from, at)) != npos;) {
            if ((at > 0 && !parts_words(text, at - 1)) || !parts_words(text, at + from.size())) {
                ++at;
                // A needle that overlaps itself is compared again and again.
                call.charge(from.size());
                continue;
            }
            call.out().append(text.substr(copied, at - copied));
            call.out().append(call.text(2));
            copied = at += from.size();
        }
    call.out().append(text.substr(copied));
}

void replacelist(Call& call) {
    std::string text(call.text(0));
    for (std::size_t i = 1; i + 1 < call.count(); i += 2) {
        TextBuffer replaced(title_format_text_limit);
        put_replaced(text, call.text(i), call.text(i + 1), replaced);
        call.charge(text.size());
        text = replaced.view();
    }
    call.out().append(text);
}

void underscores(Call& call) {
    put_replaced(call.text(0), " ", "_", call.out());
}

void spaces(Call& call) {
    put_replaced(call.text(0), "_", " ", call.out());
}

void colons(Call& call) {
    const std::string_view text = call.text(0);
    for (std::size_t at = 0; at < text.size();) {
        const Character character = take_character(text, at);
        const bool is_colon = character.code_point == ':' || character.code_point == ';';
        const std::string_view rest = is_colon ? without_leading_blanks(text.substr(at)) : text.substr(at);
        if (rest.size() == text.size() - at)
            call.out().append(character.bytes);
        else
            call.out().append(" - ");
        at = text.size() - rest.size();
    }
}

} // namespace vantaro::core::functions
