// The present time, as files and journals have it. Any thread.
#pragma once

#include <chrono>
#include <cstdint>

namespace vantaro::core {

/// In nanoseconds since 1970-01-01 UTC.
inline std::int64_t present() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

} // namespace vantaro::core
