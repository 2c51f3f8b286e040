// Tables that say under which name a format stores a field.
//
// Several rows for one field: the first is where a new value goes, the others are read as well and kept in
// step. A field that no row names is stored under its own name.
#pragma once

#include "vantaro/tags/text.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace vantaro::core::tags {

struct FieldPlace {
    std::string_view field;
    std::string_view place;
    /// Stands for `field` only as long as the tag has none of the other places; beside them it is a field of
    /// its own. For names that programs use with more than one meaning.
    bool only_alone = false;
};

/// As equal_field_names; the tables are checked while compiling.
constexpr bool same_text(std::string_view a, std::string_view b) {
    constexpr auto fold = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    };
    return std::ranges::equal(a, b, {}, fold, fold);
}

/// No place stands for two fields, and field names are upper case.
template <std::size_t Size>
constexpr bool is_sound(const std::array<FieldPlace, Size>& table) {
    for (std::size_t i = 0; i < Size; ++i) {
        for (const char c : table[i].field)
            if (c >= 'a' && c <= 'z')
                return false;
        for (std::size_t j = 0; j < i; ++j)
            if (same_text(table[i].place, table[j].place))
                return false;
    }
    return true;
}

/// The row of a place, or null.
inline const FieldPlace* row_of_place(std::span<const FieldPlace> table, std::string_view place) {
    for (const FieldPlace& row : table)
        if (same_text(row.place, place))
            return &row;
    return nullptr;
}

/// The first row of a field, or null.
inline const FieldPlace* row_of_field(std::span<const FieldPlace> table, std::string_view field) {
    for (const FieldPlace& row : table)
        if (same_text(row.field, field))
            return &row;
    return nullptr;
}

/// How places are ranked on reading: rows in their order, a place that has no row last.
inline std::size_t rank_of_place(std::span<const FieldPlace> table, std::string_view place) {
    const FieldPlace* row = row_of_place(table, place);
    return row == nullptr ? table.size() : static_cast<std::size_t>(row - table.data());
}

/// The field that the place `name` stands for; `present` tells whether the tag has a place.
template <class IsPresent>
std::string field_of_place(std::span<const FieldPlace> table, std::string_view name,
                           const IsPresent& present) {
    const FieldPlace* row = row_of_place(table, name);
    if (row == nullptr)
        return upper_name(name);
    if (row->only_alone) {
        for (const FieldPlace& other : table)
            if (other.field == row->field && &other != row && !other.only_alone && present(other.place))
                return upper_name(name);
    }
    return std::string(row->field);
}

} // namespace vantaro::core::tags
