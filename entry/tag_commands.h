// The commands of "/tag:" arguments, each on one track's tags:
//
//     NAME=VALUE        sets or, with no value, erases a field; backslashes separate several values
//     AUTOTRACKNUMBER   numbers the tracks in the order of the command line
//     FORMAT:FIELD:SPEC     sets the field to what the title-formatting pattern gives; erases it when that is
//     nothing GUESS:PATTERN:SPEC    takes fields out of what the title-formatting pattern gives, by a guess
//     pattern
//
// Any thread.
#pragma once

#include "host/api/track.h"

#include <string>
#include <string_view>

namespace quorvex {

/// Carries out one command. `index`: the track's position, from 0, among the files.
/// Returns whether it is a command at all.
bool run_tag_command(const std::string& command, vantaro::TrackHandle* track, vantaro::TrackInfo& info,
                     std::uint32_t index);

} // namespace quorvex
