#include "vantaro/locations/natural_order.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vantaro::core {
namespace {

// Each row stands before all rows below it; every pair is compared both ways, so that the order is total and
// transitive over all of them.
const std::vector<std::string> sorted{
    "", " 1", "_", "-1", ":", "\U0001F3B5",
    // numbers, equal ones by their bytes
    "0", "00", "0 a", "001", "01", "1", "1 ", "01.2", "1.2", "1.10", "2", "10",
    // beyond 64 bits
    "18446744073709551615", "18446744073709551616", "99999999999999999999999999999999999999",
    "100000000000000000000000000000000000000",
    // letters of either case, and with marks, stand together; small ones first where all else is equal
    // (the one that is not UTF-8 is in Windows-1252)
    "a", "A", "\xC3\xA4", "\xE4", "\xC3\x84", "a01b2", "a1b2", "a1b10", "ab", "aB", "Ab", "\xC3\xA4z", "b",
    "Eno", "\u00C9tude", "Track 2", "track 10", "Z", "Zappa", "\u044F"};

TEST(NaturalOrder, SortsAsPeopleDo) {
    for (const auto& a : sorted)
        for (const auto& b : sorted)
            EXPECT_EQ(compare_natural(a, b), &a <=> &b) << a << " | " << b;
}

TEST(NaturalOrder, OfKeysIsTheSame) {
    std::vector<std::string> texts = sorted;
    for (const char* odd : {"\xFF", "\xFE", "\xF0\x9F\x8E", "\xC3", "x\x81", "x\x90"})
        texts.emplace_back(odd);
    texts.push_back(std::string("a\0", 2));
    texts.push_back(std::string("a\0b", 3));
    texts.push_back(std::string(3000, 'k') + "2");
    texts.push_back(std::string(3000, 'k') + "10");
    for (const std::string& a : texts)
        for (const std::string& b : texts) {
            const auto order = compare_natural(a, b);
            EXPECT_EQ(natural_sort_key(a) <=> natural_sort_key(b), order) << a << " | " << b;
            EXPECT_EQ(order == 0, a == b) << a << " | " << b;
        }
    std::vector<std::string> paths{"/b/Track 10", "/a/track 2", "/c/\xC9 1", "/d/Z", "/e/e 2"};
    sort_naturally(paths, [](const std::string& path) { return std::string_view(path).substr(3); });
    EXPECT_EQ(paths, (std::vector<std::string>{"/c/\xC9 1", "/e/e 2", "/a/track 2", "/b/Track 10", "/d/Z"}));
}

TEST(NaturalOrder, MayLeaveOutTheCase) {
    EXPECT_EQ(compare_natural_ignoring_case("\u00C9a 10", "\u00E9A 10"), std::weak_ordering::equivalent);
    EXPECT_EQ(compare_natural_ignoring_case("A 2", "a 10"), std::weak_ordering::less);
    EXPECT_EQ(compare_natural_ignoring_case("\u00E9", "e"), std::weak_ordering::greater);
}

} // namespace
} // namespace vantaro::core
