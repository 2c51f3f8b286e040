#include "host/shared/failure.h"

#include <sys/eventfd.h>

#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace quorvex {

namespace {

thread_local uCallStackTracker* innermost_call = nullptr;

} // namespace

void uBugCheck(const char* what) {
    std::fprintf(stderr, "Fatal internal error: %s\n", what);
    for (const uCallStackTracker* call = innermost_call; call; call = call->outer_)
        std::fprintf(stderr, "  in: %s\n", call->name_);
    std::abort();
}

std::string uFormatSystemErrorMessage(int code) {
    return std::generic_category().message(code);
}

uCallStackTracker::uCallStackTracker(const char* name) : name_(name), outer_(innermost_call) {
    innermost_call = this;
}

uCallStackTracker::~uCallStackTracker() {
    innermost_call = outer_;
}

int GetInfiniteWaitEvent() {
    static const int event = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return event;
}

} // namespace quorvex
