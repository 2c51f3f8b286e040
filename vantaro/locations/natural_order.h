// The order in which people sort names: "Track 2" before "Track 10", "\u00C9dith" among the words in E,
// capital and small letters together.
//
//     std::ranges::sort(names, [](const auto& a, const auto& b) { return compare_natural(a, b) < 0; });
//     sort_naturally(paths, [](const std::string& path) { return name_of(path); });        // for many
//
// The order is that of the Unicode collation algorithm for no language in particular, with runs of digits
// taken as numbers. A text that is not UTF-8 stands where its letters would (path_as_text). It is a total
// order: texts that collate alike go by their bytes, and only equal bytes compare equal.
//
// Any thread; independent of the locale.
#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantaro::core {

std::strong_ordering compare_natural(std::string_view a, std::string_view b);

/// The same order, in which texts that differ only in the case of letters are equivalent.
std::weak_ordering compare_natural_ignoring_case(std::string_view a, std::string_view b);

/// Bytes that compare as the texts do. Making one takes a few comparisons' time, comparing two next to none.
std::string natural_sort_key(std::string_view text);

/// Sorts texts by the part of them that `part` returns, a std::string_view.
template <class Part>
void sort_naturally(std::vector<std::string>& texts, const Part& part) {
    std::vector<std::pair<std::string, std::size_t>> keys;
    keys.reserve(texts.size());
    for (const std::string& text : texts)
        keys.emplace_back(natural_sort_key(part(text)), keys.size());
    std::ranges::sort(keys);
    std::vector<std::string> sorted;
    sorted.reserve(texts.size());
    for (const auto& [key, index] : keys)
        sorted.push_back(std::move(texts[index]));
    texts = std::move(sorted);
}

} // namespace vantaro::core
