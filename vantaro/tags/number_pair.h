// "3/12": a number and a total, which most formats store together and which are two fields here.
#pragma once

#include "vantaro/tags/text.h"

#include <array>
#include <string>
#include <string_view>

namespace vantaro::core::tags {

struct PairNames {
    std::string_view number;
    std::string_view total;
};

inline constexpr std::array<PairNames, 3> pair_names{{
    {"TRACKNUMBER", "TOTALTRACKS"},
    {"DISCNUMBER", "TOTALDISCS"},
    {"MOVEMENTNUMBER", "MOVEMENTCOUNT"},
}};

/// The pair that a field of this name is a part of, or null. Requires: an upper-case name.
const PairNames* find_pair(std::string_view name);

struct NumberPair {
    Values numbers;
    Values totals;

    /// The half of that name. Requires: `name` is one of the two.
    Values& half(const PairNames& names, std::string_view name) {
        return name == names.number ? numbers : totals;
    }
};

/// Splits each text at its first slash; halves that are empty are left out.
NumberPair split_pairs(const Values& texts);
/// The reverse. Throws Refused when the texts would be split in another way.
Values join_pairs(const NumberPair& pair);

} // namespace vantaro::core::tags
