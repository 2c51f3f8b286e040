// The order in which people sort names: "Track 2" before "Track 10", capital and small letters alike.
//
//     std::ranges::sort(names, [](const auto& a, const auto& b) { return compare_natural(a, b) < 0; });
//
// Any thread; independent of the locale.
#pragma once

#include <compare>
#include <string_view>

namespace vantaro::core {

/// A total order: only equal bytes compare equal. What decides, the first difference of the first line that
/// has one:
///   1. runs of ASCII digits by their number, whatever its length, and all else by lower-cased code point; a
///      number stands among the other characters where digits stand. A byte that is not UTF-8 counts as the
///      code point of the same number. A text comes before its continuations.
///   2. the number with fewer leading zeros comes first;
///   3. the bytes.
std::strong_ordering compare_natural(std::string_view a, std::string_view b);

} // namespace vantaro::core
