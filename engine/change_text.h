// What a script changes in a track's tags, as one line of text.
//
//     std::string text = describe_changes(before, after);      // ARTIST = "a"; "b"; COMMENT removed
//
// Any thread.
#pragma once

#include "host/api/track_info.h"

#include <exception>
#include <string>
#include <vector>

namespace quorvex {

/// What equal tags give.
inline constexpr const char* no_changes = "No changes";

/// The names of the fields that differ, in the order of their names. Compared as below.
std::vector<std::string> changed_fields(const vantaro::TrackInfo& before, const vantaro::TrackInfo& after);

/// Compares the metadata fields: names without regard to the case of ASCII letters, values byte for byte and
/// in order. Changed fields come in the order of their names; equal tags give no_changes.
std::string describe_changes(const vantaro::TrackInfo& before, const vantaro::TrackInfo& after);

/// What previews show: the same up to its first line break.
std::string preview_text(const vantaro::TrackInfo& before, const vantaro::TrackInfo& after);
/// What previews show of a track on which an action has thrown.
std::string preview_text(const std::exception& failure);

} // namespace quorvex
