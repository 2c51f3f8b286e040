// How long a million paths take to sort: comparing the texts themselves, and by keys made of them.

#include "vantaro/locations/natural_order.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <random>
#include <string>
#include <vector>

namespace vantaro::core {
namespace {

std::vector<std::string> made_up_paths(int count) {
    std::mt19937 random; // the same ones every time
    const char* const names[] = {"Édith", "Zappa", "Ólafur", "The Harbour Band", "Tidewright Ensemble"};
    std::vector<std::string> paths;
    for (int i = 0; i < count; ++i)
        paths.push_back("/music/" + std::string(names[random() % 5]) + ' ' + std::to_string(random() % 900)
                        + "/Album " + std::to_string(random() % 20) + "/" + std::to_string(random() % 30)
                        + " - Song of " + std::to_string(random() % 100'000) + ".flac");
    return paths;
}

template <class Sort>
void measure(const char* what, std::vector<std::string> paths, const Sort& sort) {
    const std::clock_t start = std::clock(); // of this process alone
    sort(paths);
    const double taken = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    const bool is_sorted =
        std::ranges::is_sorted(paths, [](const auto& a, const auto& b) { return compare_natural(a, b) < 0; });
    std::printf("%-20s %5.2f s%s\n", what, taken, is_sorted ? "" : "  NOT IN ORDER");
}

} // namespace
} // namespace vantaro::core

int main() {
    using namespace vantaro::core;
    const std::vector<std::string> paths = made_up_paths(1'000'000);
    measure("comparing texts", paths, [](std::vector<std::string>& texts) {
        std::ranges::sort(texts, [](const auto& a, const auto& b) { return compare_natural(a, b) < 0; });
    });
    measure("by keys", paths, [](std::vector<std::string>& texts) {
        sort_naturally(texts, [](const std::string& text) { return std::string_view(text); });
    });
    return 0;
}
