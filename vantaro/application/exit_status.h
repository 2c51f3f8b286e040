// Exit statuses of the programs.
#pragma once

namespace vantaro::core::exit_status {

inline constexpr int done = 0;
/// Some track failed; the others are done.
inline constexpr int some_failed = 1;
/// Wrong usage, or nothing could be begun.
inline constexpr int not_begun = 2;
/// What was begun is finished, the rest was left alone.
inline constexpr int interrupted = 130;

} // namespace vantaro::core::exit_status
