// Tables whose rows have names, sorted and checked by the compiler.
//
//     constexpr auto rows = sorted_by_name(std::to_array<Row>({{"b", 1}, {"a", 2}}));
//     static_assert(names_are_unique(rows));
//     const Row* row = find_by_name(rows, "A");
//
// Names are in small letters and are found without regard to the case of ASCII letters. Any thread.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace vantaro::core {

template <class Row, std::size_t count>
constexpr std::array<Row, count> sorted_by_name(std::array<Row, count> rows) {
    std::ranges::sort(rows, {}, &Row::name);
    return rows;
}

template <class Row, std::size_t count>
constexpr bool names_are_unique(const std::array<Row, count>& rows) {
    return std::ranges::adjacent_find(rows, {}, &Row::name) == rows.end();
}

template <class Row, std::size_t count>
const Row* find_by_name(const std::array<Row, count>& rows, std::string_view name) {
    std::array<char, 32> folded{};
    if (name.size() > folded.size())
        return nullptr;
    std::ranges::transform(name, folded.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    const std::string_view wanted(folded.data(), name.size());
    const auto found = std::ranges::lower_bound(rows, wanted, {}, &Row::name);
    return found != rows.end() && found->name == wanted ? &*found : nullptr;
}

} // namespace vantaro::core
