// Failures that end the process, failures of the system, and what the process was doing.
//
//     uCallStackTracker marker("reading tags");
//     if (!factory->query(...)) uBugCheck("a service refuses its own class");
#pragma once

#include <string>

namespace quorvex {

/// Reports a fatal internal error on standard error, with the calls in progress on this thread, and ends the
/// process. Any thread.
[[noreturn]] void uBugCheck(const char* what);

/// What the system says of an errno value.
std::string uFormatSystemErrorMessage(int code);

/// Names the host call in progress on this thread while it lives; uBugCheck prints the names. Lives on the
/// stack; `name` must outlive it.
class uCallStackTracker {
public:
    explicit uCallStackTracker(const char* name);
    ~uCallStackTracker();
    uCallStackTracker(const uCallStackTracker&) = delete;
    uCallStackTracker& operator=(const uCallStackTracker&) = delete;

private:
    friend void uBugCheck(const char* what);
    const char* name_;
    uCallStackTracker* outer_;
};

/// The wait handle of an AbortFlag that never aborts: a file descriptor that never becomes readable. One for
/// the process, never closed.
int GetInfiniteWaitEvent();

} // namespace quorvex
