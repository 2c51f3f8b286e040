#include "vantaro/terminal/standard_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

namespace vantaro::core {

namespace {

std::atomic<int> first_error = 0;

void note_error() {
    int none = 0;
    first_error.compare_exchange_strong(none, errno != 0 ? errno : EIO);
}

void flush() {
    errno = 0;
    if (std::fflush(stdout) != 0)
        note_error();
}

} // namespace

void provide_standard_streams() {
    // Not for writing, so that writing fails as it does on a closed one.
    constexpr std::array streams{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    for (const int stream : streams)
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", O_RDONLY); // takes the lowest free number: this one
}

void print_output(std::string_view text) {
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        note_error();
}

void print_output_at_once(std::string_view text) {
    print_output(text);
    flush();
}

bool end_output(Terminal& terminal) {
    flush();
    if (first_error == 0 || first_error == EPIPE)
        return true;
    terminal.line("Not everything could be printed: " + std::generic_category().message(first_error));
    return false;
}

} // namespace vantaro::core
