#include "quorvex/nearest_word.h"

#include <algorithm>
#include <vector>

namespace quorvex::command {

namespace {

/// What is longer was hardly mistyped, and comparing costs the product of the lengths.
constexpr std::size_t longest = 64;

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// How many bytes were left out, added, taken for another, or exchanged with their neighbour.
std::size_t slips(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> costs(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                costs[i][j] = i + j;
                continue;
            }
            const bool same = lower(a[i - 1]) == lower(b[j - 1]);
            costs[i][j] =
                std::min({costs[i - 1][j] + 1, costs[i][j - 1] + 1, costs[i - 1][j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1]))
                costs[i][j] = std::min(costs[i][j], costs[i - 2][j - 2] + 1);
        }
    }
    return costs[a.size()][b.size()];
}

} // namespace

const std::string* nearest_word(std::string_view typed, std::span<const std::string> words) {
    if (typed.size() > longest)
        return nullptr;
    const std::string* nearest = nullptr;
    std::size_t fewest = 2 + typed.size() / 4; // from so many on it is another word
    for (const std::string& word : words) {
        if (word.size() > longest)
            continue;
        if (const std::size_t count = slips(typed, word); count < fewest) {
            fewest = count;
            nearest = &word;
        }
    }
    return nearest;
}

} // namespace quorvex::command
