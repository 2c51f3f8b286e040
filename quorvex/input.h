// What the verbs read beside tracks: a file, or standard input for "-".
//
//     std::string bytes = read_input(session, "-", most);
//
// Main thread.
#pragma once

#include "quorvex/verbs.h"

#include <cstddef>
#include <string>
#include <vector>

namespace quorvex::command {

inline constexpr const char* standard_input = "-";

/// All of it, read once: it may be a pipe. An interrupt ends the waiting.
/// Throws: vantaro_io exceptions, which do not name the input; exception_io_data when it has more than `most`
/// bytes; exception_aborted.
std::string read_input(Session& session, const std::string& path, std::size_t most);

/// Every path that the options name, in the order of the command line, then of the list.
/// Throws: vantaro_io exceptions that name the list.
std::vector<std::string> named_paths(Session& session, const PathOptions& options);

} // namespace quorvex::command
