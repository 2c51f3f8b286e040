#include "vantaro/terminal/interrupt.h"

#include <array>
#include <csignal>

namespace vantaro::core {

namespace {

constexpr std::array ending_signals{SIGINT, SIGTERM, SIGHUP};
/// Without them the write that caused one fails, as it does for any other reason.
constexpr std::array failing_writes{SIGPIPE, SIGXFSZ};

std::atomic<AbortSignal*> current_flag{nullptr};

void on_signal(int) {
    if (AbortSignal* flag = current_flag)
        flag->set();
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
}

} // namespace

Interrupt::Interrupt() {
    current_flag = &flag_;
    for (const int signal : ending_signals)
        handle(signal, on_signal);
    for (const int signal : failing_writes)
        handle(signal, SIG_IGN);
}

Interrupt::~Interrupt() {
    for (const int signal : ending_signals)
        handle(signal, SIG_DFL);
    current_flag = nullptr;
}

} // namespace vantaro::core
