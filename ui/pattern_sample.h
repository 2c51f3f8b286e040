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

struct PatternResult {
    enum class State {
        /// There is no sample to say anything of.
        unknown,
        /// The text is what the pattern gives for the sample; it may be empty.
        result,
        /// The text is a sentence that tells what the pattern does instead, or why it is none.
        remark,
    };
    State state = State::unknown;
    /// UTF-8.
    std::string text;
};

/// Tries one of the settings of a dialog. `texts` are all of them, as they are typed. `sample` may be
/// nullptr: a remark then says what is wrong with the setting, whatever the track.
using PatternTrial = PatternResult(std::span<const std::string> texts, const PatternSample* sample);

} // namespace quorvex
