#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/locations/natural_order.h"
#include "vantaro/titleformat/functions/characters.h"
#include "vantaro/titleformat/functions/number_text.h"

#include <unicode/uloc.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <bit>
#include <unordered_set>

namespace vantaro::core::functions {

namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::string_view list_separator = "; ";

/// Calls `use` with each piece of the text; an empty separator parts nothing.
template <class Use>
void for_each_piece(std::string_view text, std::string_view separator, Use use) {
    for (std::size_t at = 0;;) {
        const std::size_t end = separator.empty() ? npos : find_text(text, separator, at);
        use(text.substr(at, end == npos ? npos : end - at));
        if (end == npos)
            return;
        at = end + separator.size();
    }
}

std::string performer_of(std::string_view field_name, std::string_view role) {
    constexpr std::string_view prefix = "performer:";
    const std::string folded = folded_case(field_name);
    return folded.starts_with(prefix) && find_text(folded, folded_case(role), prefix.size()) != npos
               ? std::string(field_name.substr(prefix.size()))
               : std::string();
}

/// Whether the text begins with a letter, or is a year, within the range "A-D" or "1990-1999".
bool is_within_range(std::string_view text, std::string_view range) {
    const std::size_t hyphen = range.find('-', 1);
    const std::string_view low = without_blanks(range.substr(0, hyphen));
    const std::string_view high = hyphen == npos ? low : without_blanks(range.substr(hyphen + 1));
    if (parse_integer(low) && parse_integer(high))
        return parse_integer(text) && compare_texts(low, text) <= 0 && compare_texts(text, high) <= 0;
    // "M" and "Mozart" are within "A-M".
    const std::string folded = folded_case(text);
    return folded_case(low) <= folded
           && first_characters(folded, count_characters(high)) <= std::string_view(folded_case(high));
}

} // namespace

void getmulti(Call& call) {
    const auto values = call.values(0);
    const auto number = call.integer(1);
    if (!number || (*number < 0 && ~static_cast<std::uint64_t>(*number) >= values.size()))
        return;
    if (const std::uint64_t index = position_within(*number, values.size()); index < values.size())
        call.out().append(values[index]);
}

void join(Call& call) {
    bool is_first = true;
    for (const std::string_view value : call.values(0)) {
        if (!std::exchange(is_first, false))
            call.out().append(call.text(1));
        call.out().append(value);
    }
}

void lenmulti(Call& call) {
    call.put_integer(static_cast<std::int64_t>(call.values(0).size()));
}

void ismulti(Call& call) {
    call.put_truth(call.values(0).size() > 1);
}

void inmulti(Call& call) {
    call.put_truth(std::ranges::count(call.values(0), call.text(1)) > 0);
}

void slice(Call& call) {
    const auto values = call.values(0);
    const auto start = call.text(1).empty() ? std::optional<std::int64_t>(0) : call.integer(1);
    const auto end =
        call.text(2).empty() ? std::optional(static_cast<std::int64_t>(values.size())) : call.integer(2);
    if (!start || !end)
        return;
    const std::uint64_t to = position_within(*end, values.size());
    for (std::uint64_t i = position_within(*start, values.size()); i < to; ++i)
        call.put_value(values[i]);
}

void splitmulti(Call& call) {
    if (!call.text(0).empty())
        for_each_piece(call.text(0), call.text(1, list_separator),
                       [&](std::string_view piece) { call.put_value(piece); });
}

void sortmulti(Call& call) {
    auto values = call.values(0);
    call.charge(call.text(0).size() * std::bit_width(values.size()));
    const bool descends = is_true(call.text(1));
    std::ranges::stable_sort(values, [&](std::string_view a, std::string_view b) {
        return (descends ? compare_natural_ignoring_case(b, a) : compare_natural_ignoring_case(a, b)) < 0;
    });
    for (const std::string_view value : values)
        call.put_value(value);
}

void reversemulti(Call& call) {
    auto values = call.values(0);
    std::ranges::reverse(values);
    for (const std::string_view value : values)
        call.put_value(value);
}

void unique(Call& call) {
    const bool matches_case = is_true(call.text(1));
    std::unordered_set<std::string> seen;
    for (const std::string_view value : call.values(0))
        if (seen.insert(matches_case ? std::string(value) : folded_case(value)).second)
            call.put_value(value);
}

void replacemulti(Call& call) {
    for (const std::string_view value : call.values(0))
        if (const std::string_view kept = value == call.text(1) ? call.text(2) : value; !kept.empty())
            call.put_value(kept);
}

void cleanmulti(Call& call) {
    for (const std::string_view value : call.values(0))
        if (!value.empty())
            call.put_value(value);
}

void first(Call& call) {
    const auto number = [&](std::size_t argument, std::int64_t otherwise) {
        return call.text(argument).empty() ? std::optional(otherwise) : call.integer(argument);
    };
    const auto count = number(1, 1);
    const auto skip = number(2, 0);
    if (!count || !skip)
        return;
    const std::string_view separator = call.text(3, list_separator);
    const std::string_view glue = call.text(4, separator);
    std::int64_t index = 0;
    std::int64_t taken = 0;
    for_each_piece(call.text(0), separator, [&](std::string_view piece) {
        if (index++ < *skip || taken >= *count)
            return;
        if (taken++ > 0)
            call.out().append(glue);
        call.out().append(piece);
    });
}

void bucket(Call& call) {
    const std::string_view text = trimmed(call.text(0));
    for (std::size_t i = 1; i < call.count(); ++i)
        if (is_within_range(text, call.text(i)))
            return call.out().append(call.text(i));
    if (parse_integer(text))
        return call.out().append(text);
    std::size_t at = 0;
    if (!text.empty())
        if (const Character initial = take_character(text, at); initial.code_point >= 0)
            call.out().append_code_point(u_toupper(initial.code_point));
}

void country(Call& call) {
    const std::string_view code = call.text(0);
    if (code.size() != 2 || !is_ascii_letter(code[0]) || !is_ascii_letter(code[1]))
        return;
    std::string region(code);
    for (char& c : region)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    char16_t name[128];
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t size =
        uloc_getDisplayCountry(("und_" + region).c_str(), "en", name, std::ssize(name), &error);
    // A code that is not known is given back as it is.
    if (U_FAILURE(error) || error == U_USING_DEFAULT_WARNING || size >= std::ssize(name))
        return;
    std::string shown;
    icu::UnicodeString(name, size).toUTF8String(shown);
    if (shown != region)
        call.out().append(shown);
}

void tag(Call& call) {
    const std::string name(call.text(0));
    const std::size_t field = call.info().find_field(name.c_str());
    if (field == no_field)
        return;
    for (std::size_t i = 0; i < call.info().value_count(field); ++i)
        call.put_value(call.info().value(field, i));
    call.found();
}

void technical(Call& call) {
    const std::string name(call.text(0));
    const std::size_t index = call.info().find_technical(name.c_str());
    if (index == no_field)
        return;
    call.out().append(call.info().technical_value(index));
    call.found();
}

void performer(Call& call) {
    const TrackInfo& info = call.info();
    for (std::size_t field = 0; field < info.field_count(); ++field) {
        const std::string_view name = info.field_name(field);
        call.charge(name.size() + call.text(0).size());
        if (performer_of(name, call.text(0)).empty())
            continue;
        for (std::size_t i = 0; i < info.value_count(field); ++i)
            call.put_value(info.value(field, i));
        call.found();
    }
}

void people(Call& call) {
    constexpr const char* names[] = {"ALBUMARTIST", "ALBUM ARTIST", "ARTIST",   "COMPOSER", "LYRICIST",
                                     "WRITER",      "CONDUCTOR",    "ARRANGER", "REMIXER",  "PERFORMER"};
    const TrackInfo& info = call.info();
    std::unordered_set<std::string> seen;
    const auto put_field = [&](std::size_t field) {
        for (std::size_t i = 0; i < info.value_count(field); ++i)
            if (seen.insert(folded_case(info.value(field, i))).second)
                call.put_value(info.value(field, i));
        call.found();
    };
    for (const char* name : names)
        if (const std::size_t field = info.find_field(name); field != no_field)
            put_field(field);
    for (std::size_t field = 0; field < info.field_count(); ++field)
        if (!performer_of(info.field_name(field), "").empty())
            put_field(field);
}

} // namespace vantaro::core::functions
