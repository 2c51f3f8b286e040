// The clock service: calls back at intervals, on the main thread.
//
// A callback is called once at once when it is registered on the main thread, so that nobody waits for a
// first time. Once unregister_callback has returned, no call is under way nor will one come, unless it was
// called from inside that call.
#pragma once

#include "host/api/system.h"
#include "vantaro/services/main_thread.h"

#include <QTimer>

#include <map>
#include <memory>
#include <mutex>

namespace vantaro::core {

class Clock final : public StaticService<ClockService> {
public:
    explicit Clock(MainThread& main_thread) : main_thread_(main_thread) {}

    void register_callback(ClockCallback* callback, std::uint64_t period) override;
    void unregister_callback(ClockCallback* callback) override;

    /// Now, in units of 100 ns since 1601-01-01 UTC.
    static std::uint64_t now();

private:
    void start(ClockCallback* callback, int milliseconds);
    void tick(ClockCallback* callback);

    MainThread& main_thread_;
    std::recursive_mutex mutex_; // guards timers_, and is held during calls
    /// No timer yet: registered on another thread, to be started on the main thread.
    std::map<ClockCallback*, std::unique_ptr<QTimer>> timers_;
};

} // namespace vantaro::core
