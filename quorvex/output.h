// What the verbs print on standard output: objects, one a line, or text for people.
#pragma once

#include "host/api/track.h"
#include "host/api/track_info_record.h"
#include "vantaro/terminal/failure_lines.h"
#include "vantaro/terminal/terminal.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex::command {

using Json = nlohmann::ordered_json;

/// {"path": "/m/a.flac", "subsong": 0}
Json track_object(const vantaro::TrackHandle& track);
/// {"ARTIST": ["a", "b"], ...}
Json fields_object(const vantaro::TrackInfoRecord& info);
/// {"codec": "FLAC", ..., "length": 1.5}
Json technical_object(const vantaro::TrackInfoRecord& info);

/// One line on standard output. Bytes that are not UTF-8 come out as replacement characters, and what a
/// terminal might act upon as escapes.
void print_json(const Json& object);
void print_line(std::string_view line);

/// "2026-01-31 12:00:00", of a time in nanoseconds since 1970-01-01 UTC.
std::string local_time(std::int64_t nanoseconds);

/// Programs are told of each failure.
constexpr vantaro::core::FailureLines::Told failures_told(bool json) {
    return json ? vantaro::core::FailureLines::Told::one_by_one
                : vantaro::core::FailureLines::Told::summed_up;
}

/// Tells a person at the terminal how to take the run back; nothing for run 0.
void hint_at_undo(vantaro::core::Terminal& terminal, std::uint64_t run);

} // namespace quorvex::command
