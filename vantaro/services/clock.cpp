#include "vantaro/services/clock.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace vantaro::core {

std::uint64_t Clock::now() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    constexpr std::int64_t ticks_from_1601_to_1970 = 116'444'736'000'000'000;
    const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<Ticks>(since_1970).count()
                                      + ticks_from_1601_to_1970);
}

void Clock::register_callback(ClockCallback* callback, std::uint64_t period) {
    constexpr std::uint64_t ticks_per_millisecond = 10'000;
    constexpr std::uint64_t longest = std::numeric_limits<int>::max();
    const auto milliseconds =
        static_cast<int>(std::clamp<std::uint64_t>(period / ticks_per_millisecond, 1, longest));
    {
        const std::lock_guard lock(mutex_);
        timers_[callback].reset();
    }
    if (main_thread_.is_current())
        start(callback, milliseconds);
    else
        main_thread_.post([this, callback, milliseconds] { start(callback, milliseconds); });
}

void Clock::unregister_callback(ClockCallback* callback) {
    const std::lock_guard lock(mutex_);
    const auto found = timers_.find(callback);
    if (found == timers_.end())
        return;
    if (QTimer* timer = found->second.release()) // it may be the one that is calling
        timer->deleteLater();
    timers_.erase(found);
}

void Clock::start(ClockCallback* callback, int milliseconds) {
    const std::lock_guard lock(mutex_);
    const auto found = timers_.find(callback);
    if (found == timers_.end() || found->second)
        return;
    found->second = std::make_unique<QTimer>();
    QObject::connect(found->second.get(), &QTimer::timeout, [this, callback] { tick(callback); });
    found->second->start(milliseconds);
    tick(callback);
}

void Clock::tick(ClockCallback* callback) {
    const std::lock_guard lock(mutex_);
    if (timers_.contains(callback))
        callback->on_time(now());
}

} // namespace vantaro::core
