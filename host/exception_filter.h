// What is done with a failure that reaches a handler of window events, which no exception may leave.
//
//     guarded([&] { store_settings(...); });
//
// Main thread.
#pragma once

#include <exception>

namespace quorvex {

/// Prints the failure on the console. Returns whether that settles it; otherwise it passes on.
bool uExceptFilterProc(const std::exception& failure);

/// Runs a handler. Where it fails and the filter takes the failure, the event counts as not handled.
template <class Handle>
void guarded(Handle&& handle) {
    try {
        handle();
    } catch (const std::exception& failure) {
        if (!uExceptFilterProc(failure))
            throw;
    }
}

} // namespace quorvex
