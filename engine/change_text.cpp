#include "engine/change_text.h"

#include "host/shared/text.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr std::size_t shown_characters = 50;
constexpr std::string_view separator = "; ";

struct FieldNameOrder {
    static signed char fold(char c) {
        return static_cast<signed char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
    }
    bool operator()(std::string_view a, std::string_view b) const {
        return std::ranges::lexicographical_compare(a, b, {}, fold, fold);
    }
};

struct FieldPair {
    std::size_t before = no_field;
    std::size_t after = no_field;
};

bool equal_values(const TrackInfo& a, std::size_t a_field, const TrackInfo& b, std::size_t b_field) {
    const std::size_t count = a.value_count(a_field);
    if (count != b.value_count(b_field))
        return false;
    for (std::size_t i = 0; i < count; ++i)
        if (std::strcmp(a.value(a_field, i), b.value(b_field, i)) != 0)
            return false;
    return true;
}

struct ChangedField {
    std::string_view name;
    FieldPair fields;
};

/// In the order of their names. The names belong to the tags.
std::vector<ChangedField> differences(const TrackInfo& before, const TrackInfo& after) {
    std::map<std::string_view, FieldPair, FieldNameOrder> fields;
    for (std::size_t i = 0; i < before.field_count(); ++i)
        fields[before.field_name(i)].before = i;
    for (std::size_t i = 0; i < after.field_count(); ++i)
        fields[after.field_name(i)].after = i;
    std::vector<ChangedField> changed;
    for (const auto& [name, pair] : fields)
        if (pair.before == no_field || pair.after == no_field
            || !equal_values(before, pair.before, after, pair.after))
            changed.push_back({name, pair});
    return changed;
}

} // namespace

std::vector<std::string> changed_fields(const TrackInfo& before, const TrackInfo& after) {
    std::vector<std::string> names;
    for (const ChangedField& field : differences(before, after))
        names.emplace_back(field.name);
    return names;
}

std::string describe_changes(const TrackInfo& before, const TrackInfo& after) {
    std::string text;
    for (const auto& [name, pair] : differences(before, after)) {
        if (!text.empty())
            text += separator;
        uAddStringUpper(text, name);
        if (pair.after == no_field) {
            text += " removed";
            continue;
        }
        text += " = ";
        for (std::size_t i = 0; i < after.value_count(pair.after); ++i) {
            if (i > 0)
                text += separator;
            text += '"';
            text += first_line(limit_text(after.value(pair.after, i), shown_characters));
            text += '"';
        }
    }
    return text.empty() ? no_changes : text;
}

std::string preview_text(const TrackInfo& before, const TrackInfo& after) {
    return first_line(describe_changes(before, after));
}

std::string preview_text(const std::exception& failure) {
    return first_line(std::string("Erorr: ") + failure.what());
}

} // namespace quorvex
