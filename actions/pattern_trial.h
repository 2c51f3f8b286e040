// What patterns give while they are being typed in a settings dialog.
//
//     {1008, pattern, any_text, &formatting_pattern_history, try_title_setting<pattern>},
//
// Main thread.
#pragma once

#include "ui/pattern_sample.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex {

/// A title-formatting pattern: the text that it gives for the sample, or what is wrong with it and where.
/// `time` is what %now% gives, in units of 100 ns since 1601-01-01 UTC; 0 for nothing.
PatternResult try_title_pattern(const std::string& pattern, const PatternSample* sample, std::uint64_t time);
/// What is wrong with the pattern: it does not compile, or calls a function that is not there.
std::optional<PatternResult> pattern_fault(const std::string& pattern);
/// The present, in those units.
std::uint64_t present_time();
/// A guess pattern: the fields that it finds in a text.
PatternResult try_guess_pattern(std::string_view subject, std::string_view pattern);
/// The fields that a guess has set, or that it found none in `subject`.
PatternResult guessed(const vantaro::TrackInfo& fields, std::string_view subject);

/// A setting that is a title-formatting pattern.
template <std::size_t setting>
PatternResult try_title_setting(std::span<const std::string> texts, const PatternSample* sample) {
    return try_title_pattern(texts[setting], sample, present_time());
}

} // namespace quorvex
