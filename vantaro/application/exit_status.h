// Exit statuses of the programs.
#pragma once

namespace vantaro::core::exit_status {

inline constexpr int done = 0;
/// Some track failed, or some of what was asked for is not done; the rest is.
inline constexpr int some_failed = 1;
/// Wrong usage, or nothing could be begun, or the answer to a question was no.
inline constexpr int not_begun = 2;
/// What was begun is finished, the rest was left alone. Also where a question was interrupted.
inline constexpr int interrupted = 130;

} // namespace vantaro::core::exit_status
