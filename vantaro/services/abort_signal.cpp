#include "vantaro/services/abort_signal.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace vantaro::core {

AbortSignal::AbortSignal() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (event_ < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

AbortSignal::~AbortSignal() {
    ::close(event_);
}

void AbortSignal::set() noexcept {
    if (set_.exchange(true))
        return;
    const int saved = errno;
    const std::uint64_t one = 1;
    // Cannot fail: the counter is 0 and the descriptor is ours.
    [[maybe_unused]] const auto written = ::write(event_, &one, sizeof one);
    errno = saved;
}

} // namespace vantaro::core
