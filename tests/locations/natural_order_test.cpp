#include "vantaro/locations/natural_order.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vantaro::core {
namespace {

// Each row stands before all rows below it; every pair is compared both ways, so that the order is total and
// transitive over all of them.
TEST(NaturalOrder, SortsAsPeopleDo) {
    const std::vector<std::string> sorted{
        "", " 1", "-1",
        // numbers, equal ones by their zeros
        "0", "00", "0 a", "1", "01", "001", "1 ", "1.2", "01.2", "1.10", "2", "10",
        // beyond 64 bits
        "18446744073709551615", "18446744073709551616", "99999999999999999999999999999999999999",
        "100000000000000000000000000000000000000",
        // letters of either case stand where the small ones are
        ":", "_", "A", "a", std::string("a\0", 2), "a1b2", "a01b2", "a1b10", "Ab", "aB", "ab", "b", "Track 2",
        "track 10", "Z",
        // capital and small letter, the same letter in Latin-1, its continuation, a byte of no text
        "\xC3\x84", "\xC3\xA4", "\xE4", "\xC3\xA4z",
        // a character cut off, a byte of no text, and the whole character outside the basic plane
        "\xF0\x9F\x8E", "\xFF", "\xF0\x9F\x8E\xB5"};
    for (std::size_t i = 0; i < sorted.size(); ++i)
        for (std::size_t j = 0; j < sorted.size(); ++j)
            EXPECT_EQ(compare_natural(sorted[i], sorted[j]), i <=> j) << sorted[i] << " | " << sorted[j];
}

} // namespace
} // namespace vantaro::core
