// What the verbs print on standard output: objects, one a line, or text for people.
#pragma once

#include "host/api/track_info_record.h"
#include "vantaro/terminal/terminal.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string_view>

namespace quorvex::command {

using Json = nlohmann::ordered_json;

/// {"ARTIST": ["a", "b"], ...}
Json fields_object(const vantaro::TrackInfoRecord& info);
/// {"codec": "FLAC", ..., "length": 1.5}
Json technical_object(const vantaro::TrackInfoRecord& info);

/// One line on standard output. Bytes that are not UTF-8 come out as replacement characters, and what a
/// terminal might act upon as escapes.
void print_json(const Json& object);
void print_line(std::string_view line);

/// Tells a person at the terminal how to take the run back; nothing for run 0.
void hint_at_undo(vantaro::core::Terminal& terminal, std::uint64_t run);

} // namespace quorvex::command
