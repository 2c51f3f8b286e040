#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/characters.h"
#include "vantaro/titleformat/variables.h"

#include <string>
#include <unordered_set>

namespace vantaro::core::functions {

namespace {

std::string as_value(std::string_view text) {
    std::string value(text);
    if (!value.empty())
        value.push_back('\0');
    return value;
}

} // namespace

void get(Call& call) {
    const std::string_view values = call.variables().get(call.text(0));
    call.out().append(values);
    if (!values.empty())
        call.found();
}

void set(Call& call) {
    call.variables().set(call.text(0), as_value(call.text(1)));
}

void put(Call& call) {
    set(call);
    call.out().append(call.text(1));
}

void setmulti(Call& call) {
    const std::string_view text = call.text(1);
    const std::string_view separator = call.text(2, "; ");
    TextBuffer values(title_format_text_limit);
    for (std::size_t at = 0; !text.empty() && at <= text.size();) {
        const std::size_t found = separator.empty() ? std::string_view::npos : find_text(text, separator, at);
        const std::size_t end = std::min(found, text.size());
        values.append(text.substr(at, end - at));
        values.append('\0');
        at = found == std::string_view::npos ? text.size() + 1 : end + separator.size();
    }
    call.variables().set(call.text(0), std::string(values.view()));
}

void unset(Call& call) {
    call.variables().unset(call.text(0));
}

void copy(Call& call) {
    call.variables().set(call.text(0), std::string(call.text(1)));
}

void copymerge(Call& call) {
    const bool keeps_duplicates = is_true(call.text(2));
    TextBuffer merged(title_format_text_limit);
    merged.append(call.variables().get(call.text(0)));
    std::unordered_set<std::string> seen;
    for (std::string_view rest = merged.view(); !rest.empty(); rest.remove_prefix(rest.find('\0') + 1))
        seen.emplace(rest.substr(0, rest.find('\0')));
    call.charge(merged.size());
    for (const std::string_view value : call.values(1))
        if (seen.emplace(value).second || keeps_duplicates) {
            merged.append(value);
            merged.append('\0');
        }
    call.variables().set(call.text(0), std::string(merged.view()));
}

} // namespace vantaro::core::functions
