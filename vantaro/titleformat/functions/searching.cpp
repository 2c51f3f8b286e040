#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/characters.h"
#include "vantaro/titleformat/functions/number_text.h"
#include "vantaro/titleformat/functions/placeholder.h"
#include "vantaro/titleformat/functions/unaccented.h"

namespace vantaro::core::functions {

namespace {

constexpr auto npos = std::string_view::npos;

void put_position(Call& call, std::size_t byte) {
    if (byte != npos)
        call.put_integer(static_cast<std::int64_t>(count_characters(call.text(0).substr(0, byte))));
}

} // namespace

void len(Call& call) {
    call.put_integer(static_cast<std::int64_t>(count_characters(call.text(0))));
}

void find(Call& call) {
    put_position(call, find_text(call.text(0), call.text(1)));
}

void findlast(Call& call) {
    const std::string_view text = call.text(0);
    const std::string_view needle = call.text(1);
    // Backwards, so that this takes linear time as well.
    const std::string reversed_text(text.rbegin(), text.rend());
    const std::string reversed_needle(needle.rbegin(), needle.rend());
    const std::size_t from_end = find_text(reversed_text, reversed_needle);
    put_position(call, from_end == npos ? npos : text.size() - from_end - needle.size());
}

void contains(Call& call) {
    call.put_truth(find_text(call.text(0), call.text(1)) != npos);
}

void startswith(Call& call) {
    call.put_truth(call.text(0).starts_with(call.text(1)));
}

void endswith(Call& call) {
    call.put_truth(call.text(0).ends_with(call.text(1)));
}

void containsfold(Call& call) {
    const auto folded = [](std::string_view text) { return folded_case(unaccented(text)); };
    call.put_truth(find_text(folded(call.text(0)), folded(call.text(1))) != npos);
}

void count(Call& call) {
    const std::string_view needle = call.text(1);
    std::int64_t number = 0;
    if (!needle.empty())
        for (std::size_t at = 0; (at = find_text(call.text(0), needle, at)) != npos; at += needle.size())
            ++number;
    call.put_integer(number);
}

void isnumber(Call& call) {
    call.put_truth(parse_decimal(call.text(0)).has_value());
}

void hasformat(Call& call) {
    call.put_truth(match_placeholders(call.text(0), call.text(1), PlaceholderStyle::named).has_value());
}

void fromtext(Call& call) {
    const auto pieces = match_placeholders(call.text(1), call.text(0), PlaceholderStyle::numbered);
    if (!pieces)
        return call.out().append(call.text(0));
    const std::string_view output = call.text(2);
    for (std::size_t at = 0; at < output.size();) {
        if (output[at] == '%' && at + 1 < output.size() && is_ascii_digit(output[at + 1])) {
            call.out().append((*pieces)[static_cast<std::size_t>(output[at + 1] - '0')]);
            at += 2;
        } else {
            call.out().append(output[at++]);
        }
    }
}

} // namespace vantaro::core::functions
