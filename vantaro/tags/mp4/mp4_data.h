// The insides of an item list's atoms. Names of atoms are those of mp4_places.h.
#pragma once

#include "vantaro/tags/mp4/mp4_atoms.h"
#include "vantaro/tags/mp4/mp4_places.h"

#include <optional>
#include <string>
#include <string_view>

namespace vantaro::core::tags {

/// What the table says of the atom; a text when it has none of this name.
const Mp4Place& mp4_place(std::string_view name);
/// The name of four bytes as the table has it, and the reverse.
std::string readable_name(std::string_view bytes);
std::string stored_name(std::string_view name);

struct FreeformName {
    std::string mean;
    std::string name;

    friend bool operator==(const FreeformName&, const FreeformName&) = default;
};
/// Nothing when the atom's body has no such parts.
std::optional<FreeformName> freeform_name(std::string_view body);

/// The values of an atom; nothing when it holds something else than what its name says, or no text.
std::optional<Values> mp4_values(Mp4Kind kind, std::string_view body);
/// The two numbers of trkn and disk, 0 where there is none.
struct Mp4Pair {
    unsigned number = 0;
    unsigned total = 0;
};
Mp4Pair mp4_pair(std::string_view body);

std::string text_body(const Values& values);
std::string freeform_body(const FreeformName& name, const Values& values);
std::string pair_body(const Mp4Place& place, Mp4Pair pair);
/// Throws Refused when the value is no whole number that fits.
std::string number_body(const Mp4Place& place, const Values& values);

/// A whole number from 0 to `largest`, in digits. Throws Refused.
unsigned checked_number(const std::string& text, unsigned largest);

} // namespace vantaro::core::tags
