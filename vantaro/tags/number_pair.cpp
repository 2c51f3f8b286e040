#include "vantaro/tags/number_pair.h"

#include "vantaro/tags/tag_store.h"

#include <algorithm>

namespace vantaro::core::tags {

const PairNames* find_pair(std::string_view name) {
    const auto found = std::ranges::find_if(
        pair_names, [&](const PairNames& names) { return names.number == name || names.total == name; });
    return found == pair_names.end() ? nullptr : &*found;
}

NumberPair split_pairs(const Values& texts) {
    NumberPair pair;
    for (const std::string& text : texts) {
        const std::size_t slash = text.find('/');
        std::string number = text.substr(0, slash);
        if (!number.empty())
            pair.numbers.push_back(std::move(number));
        if (slash != std::string::npos && slash + 1 < text.size())
            pair.totals.push_back(text.substr(slash + 1));
    }
    return pair;
}

Values join_pairs(const NumberPair& pair) {
    if (std::ranges::any_of(pair.numbers,
                            [](const std::string& text) { return text.find('/') != std::string::npos; }))
        throw Refused("a number cannot contain a slash");
    Values texts;
    for (std::size_t i = 0; i < std::max(pair.numbers.size(), pair.totals.size()); ++i) {
        std::string& text = texts.emplace_back();
        if (i < pair.numbers.size())
            text = pair.numbers[i];
        if (i < pair.totals.size())
            text += "/" + pair.totals[i];
    }
    return texts;
}

} // namespace vantaro::core::tags
