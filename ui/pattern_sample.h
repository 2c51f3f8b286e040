// Trying a pattern while it is being typed: on which track, and what came out.
//
// Main thread.
#pragma once

#include "host/api/track.h"
#include "host/api/track_info_record.h"

#include <cstdint>
#include <span>
#include <string>

namespace quorvex {

/// A track as an action meets it in a run.
struct PatternSample {
    vantaro::Ref<vantaro::TrackHandle> track;
    /// The tags as the actions before leave them.
    vantaro::TrackInfoRecord info;
    /// The track's position, from 0, among `total`.
    std::uint32_t index = 0;
    std::uint32_t total = 1;
};

/// One line for people, UTF-8.
struct PatternResult {
    /// The pattern is no pattern, and the text says why.
    bool is_error = false;
    /// What it gives for the sample; empty without one.
    std::string text;
};

/// Tries one of the settings of a dialog. `texts` are all of them, as they are typed; `sample` may be
/// nullptr.
using PatternTrial = PatternResult(std::span<const std::string> texts, const PatternSample* sample);

} // namespace quorvex
