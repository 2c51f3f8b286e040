// The guess pattern matcher: takes field values out of a text by a pattern such as
// "%tracknumber%. %artist% - %title%".
//
//     guess_fields(info, "01. Band - Song", "%tracknumber%. %artist% - %title%");
//
// A pattern consists of field references (%name%; %% discards what it matches) and literals, handled byte by
// byte. White space in a literal stands for white space of any length. The value of a reference ends at the
// first place where the literal behind it matches; where it matches nowhere, or there is none, the value is
// the rest. A literal at the start of the pattern that does not match is passed over. Takes time in
// proportion to the subject, for every reference at most.
#pragma once

#include "host/api/track_info.h"

#include <string_view>

namespace quorvex {

/// Sets the fields that are found, one by one, each to one value without white space at its end. Never fails:
/// a pattern that does not fit sets fewer fields. Field names are not checked.
void guess_fields(vantaro::TrackInfo& target, std::string_view subject, std::string_view pattern);

} // namespace quorvex
