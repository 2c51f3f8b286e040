// AbortSignal: the host's AbortFlag, set once from anywhere.
//
//     AbortSignal abort;
//     std::jthread worker([&] { read_all(abort); });
//     abort.set();
//
// Any thread, and signal handlers.
#pragma once

#include "host/api/abort_flag.h"

#include <atomic>

namespace vantaro::core {

class AbortSignal final : public AbortFlag {
public:
    /// Throws: std::system_error when the system has no more file descriptors.
    AbortSignal();
    ~AbortSignal();
    AbortSignal(const AbortSignal&) = delete;
    AbortSignal& operator=(const AbortSignal&) = delete;

    void set() noexcept;
    bool is_aborting() const noexcept override { return set_; }
    int wait_handle() const noexcept override { return event_; }

private:
    std::atomic<bool> set_{false};
    static_assert(std::atomic<bool>::is_always_lock_free, "signal handlers set it");
    int event_;
};

} // namespace vantaro::core
