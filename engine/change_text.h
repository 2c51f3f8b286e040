// What a script changes in a track's tags, as one line of text.
//
//     std::string text = describe_changes(before, after);      // ARTIST = "a"; "b"; COMMENT removed
//
// Any thread.
#pragma once

#include "host/api/track_info.h"

#include <string>

namespace quorvex {

/// Compares the metadata fields: names without regard to the case of ASCII letters, values byte for byte and
/// in order. Changed fields come in the order of their names; equal tags give "No changes".
std::string describe_changes(const vantaro::TrackInfo& before, const vantaro::TrackInfo& after);

} // namespace quorvex
