// Threads that nobody waits for while the component runs, but that end before it does.
//
//     start_background_thread([job] { job->run(); });
//
// Who starts one sees to it that it ends soon once it is no longer wanted.
#pragma once

#include <functional>

namespace quorvex {

/// Main thread. What `run` throws ends the process.
/// Throws: std::system_error when the system has no more threads.
void start_background_thread(std::function<void()> run);
/// Waits for all of them. Main thread; no other is started meanwhile.
void join_background_threads();

} // namespace quorvex
