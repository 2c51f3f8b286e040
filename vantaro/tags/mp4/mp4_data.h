// The insides of an item list's atoms, and the numbers of all.
#pragma once

#include "vantaro/tags/numbers.h"
#include "vantaro/tags/text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

enum class Mp4Kind { text, pair, number, flag };
/// What the atom of this name holds by its definition.
Mp4Kind mp4_kind(std::string_view atom_name);

struct Mp4Child {
    std::string_view name;
    std::string_view body;
};
/// Takes the next atom from the front of `bytes`; nothing when there is none of a valid size.
std::optional<Mp4Child> take_atom(std::string_view& bytes);
std::string make_atom(std::string_view name, std::string_view body);
/// `size` is that of the whole atom, at most 0xFFFFFFFF.
std::string atom_header(std::string_view name, std::size_t size);

struct FreeformName {
    std::string mean;
    std::string name;
};
/// Nothing when the atom's body has no such parts.
std::optional<FreeformName> freeform_name(std::string_view body);

/// The values of an atom; nothing when it holds something else than what its name says, or no text.
std::optional<Values> mp4_values(std::string_view atom_name, std::string_view body);
/// The two numbers of trkn and disk, 0 where there is none.
struct Mp4Pair {
    unsigned number = 0;
    unsigned total = 0;
};
Mp4Pair mp4_pair(std::string_view body);

std::string text_body(const Values& values);
std::string freeform_body(const FreeformName& name, const Values& values);
std::string pair_body(std::string_view atom_name, Mp4Pair pair);
/// Throws Refused when the value is no whole number that fits.
std::string number_body(std::string_view atom_name, const Values& values);

/// A whole number from 0 to `largest`, in digits. Throws Refused.
unsigned checked_number(const std::string& text, unsigned largest);

} // namespace vantaro::core::tags
