#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/characters.h"

#include <algorithm>

namespace vantaro::core::functions {

namespace {

/// How many characters a count stands for; a negative one leaves that many out.
std::uint64_t kept_count(std::string_view text, std::int64_t count) {
    return count >= 0 ? static_cast<std::uint64_t>(count) : position_within(count, count_characters(text));
}

std::string_view trim_set(std::string_view text, std::string_view set, bool leading, bool trailing) {
    const auto is_in_set = [&](std::string_view character) {
        return find_text(set, character) != std::string_view::npos;
    };
    while (leading && !text.empty()) {
        std::size_t at = 0;
        if (!is_in_set(take_character(text, at).bytes))
            break;
        text.remove_prefix(at);
    }
    while (trailing && !text.empty()) {
        const Character last = character_before(text, text.size());
        if (!is_in_set(last.bytes))
            break;
        text.remove_suffix(last.bytes.size());
    }
    return text;
}

void put_trimmed(Call& call, bool leading, bool trailing) {
    std::string_view text = call.text(0);
    if (call.count() > 1) {
        // Each character is looked for in the set.
        call.charge(text.size() * (call.text(1).size() / 64));
        call.out().append(trim_set(text, call.text(1), leading, trailing));
        return;
    }
    if (leading)
        text = without_leading_blanks(text);
    if (trailing)
        text = without_trailing_blanks(text);
    call.out().append(text);
}

} // namespace

void left(Call& call) {
    if (const auto count = call.integer(1))
        call.out().append(first_characters(call.text(0), kept_count(call.text(0), *count)));
}

void right(Call& call) {
    const auto count = call.integer(1);
    if (!count)
        return;
    const std::uint64_t size = count_characters(call.text(0));
    const std::uint64_t kept = std::min(kept_count(call.text(0), *count), size);
    call.out().append(skip_characters(call.text(0), size - kept));
}

void mid(Call& call) {
    const auto start = call.integer(1);
    const auto count = call.integer(2);
    if (!start || !count || *count <= 0)
        return;
    const std::string_view text = call.text(0);
    const std::uint64_t from = position_within(*start, count_characters(text));
    call.out().append(first_characters(skip_characters(text, from), static_cast<std::uint64_t>(*count)));
}

void substr(Call& call) {
    const std::string_view text = call.text(0);
    const std::uint64_t size = count_characters(text);
    const auto position = [&](std::size_t argument, std::uint64_t otherwise) -> std::optional<std::uint64_t> {
        if (call.text(argument).empty())
            return otherwise;
        const auto number = call.integer(argument);
        return number ? std::optional(position_within(*number, size)) : std::nullopt;
    };
    const auto start = position(1, 0);
    const auto end = position(2, size);
    if (start && end && *start < *end)
        call.out().append(first_characters(skip_characters(text, *start), *end - *start));
}

void truncate(Call& call) {
    if (const auto count = call.integer(1))
        call.out().append(
            without_trailing_blanks(first_characters(call.text(0), kept_count(call.text(0), *count))));
}

void firstwords(Call& call) {
    const auto count = call.integer(1);
    if (!count || *count <= 0)
        return;
    const std::string_view text = call.text(0);
    const std::string_view cut = first_characters(text, static_cast<std::uint64_t>(*count));
    if (cut.size() == text.size())
        return call.out().append(text);
    std::size_t end = cut.size();
    std::size_t at = end;
    // A blank behind the cut means that the last word is whole.
    if (!take_character(text, at).is_blank())
        while (end > 0 && !character_before(cut, end).is_blank())
            end -= character_before(cut, end).bytes.size();
    const std::string_view words = without_trailing_blanks(cut.substr(0, end));
    call.out().append(words.empty() ? cut : words);
}

void firstalpha(Call& call) {
    const std::string_view text = call.text(0);
    std::size_t at = 0;
    const Character first = text.empty() ? Character{{}, -1} : take_character(text, at);
    if (first.is_letter())
        call.out().append_code_point(u_toupper(first.code_point));
    else
        call.out().append(call.text(1, "#"));
}

void initials(Call& call) {
    bool is_start = true;
    for (const Character& character : Characters(call.text(0))) {
        if (is_start && character.is_letter())
            call.out().append(character.bytes);
        is_start = character.is_blank();
    }
}

void trim(Call& call) {
    put_trimmed(call, true, true);
}

void trimleft(Call& call) {
    put_trimmed(call, true, false);
}

void trimright(Call& call) {
    put_trimmed(call, false, true);
}

void collapse(Call& call) {
    bool is_pending = false;
    for (const Character& character : Characters(trimmed(call.text(0)))) {
        if (character.is_blank()) {
            is_pending = true;
            continue;
        }
        if (is_pending)
            call.out().append(' ');
        is_pending = false;
        call.out().append(character.bytes);
    }
}

void reverse(Call& call) {
    const std::string_view text = call.text(0);
    for (std::size_t end = text.size(); end > 0;) {
        const Character character = character_before(text, end);
        call.out().append(character.bytes);
        end -= character.bytes.size();
    }
}

void pad(Call& call) {
    const auto count = call.integer(1);
    if (!count)
        return;
    const std::uint64_t size = count_characters(call.text(0));
    if (*count > 0 && static_cast<std::uint64_t>(*count) > size)
        call.out().append_copies(static_cast<std::uint64_t>(*count) - size, call.text(2, " "));
    call.out().append(call.text(0));
}

void padright(Call& call) {
    const auto count = call.integer(1);
    if (!count)
        return;
    const std::uint64_t size = count_characters(call.text(0));
    call.out().append(call.text(0));
    if (*count > 0 && static_cast<std::uint64_t>(*count) > size)
        call.out().append_copies(static_cast<std::uint64_t>(*count) - size, call.text(2, " "));
}

void repeat(Call& call) {
    if (const auto count = call.integer(1); count && *count > 0)
        call.out().append_copies(static_cast<std::uint64_t>(*count), call.text(0));
}

} // namespace vantaro::core::functions
