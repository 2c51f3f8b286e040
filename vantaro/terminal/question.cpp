#include "vantaro/terminal/question.h"

#include "host/api/exceptions.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <string>
#include <string_view>

namespace vantaro::core {

namespace {

struct Answer {
    std::uint32_t bit;
    std::string_view name;
};
/// In the order in which they are offered.
constexpr std::array<Answer, 7> answers{{{button::ok, "OK"},
                                         {button::yes, "Yes"},
                                         {button::retry, "Retry"},
                                         {button::no, "No"},
                                         {button::cancel, "Cancel"},
                                         {button::abort, "Abort"},
                                         {button::ignore, "Ignore"}}};
/// From the most cautious one.
constexpr std::array cautious_order{button::cancel, button::no,  button::abort, button::ignore,
                                    button::ok,     button::yes, button::retry};
constexpr std::array affirmative_order{button::yes,    button::ok,    button::ignore, button::no,
                                       button::cancel, button::abort, button::retry};
constexpr std::uint32_t refusals = button::cancel | button::no | button::abort;

template <std::size_t n>
std::uint32_t first_offered(const std::array<std::uint32_t, n>& order, std::uint32_t buttons) {
    for (const std::uint32_t bit : order)
        if (buttons & bit)
            return bit;
    return button::ok;
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// The answer that begins like what was typed.
std::uint32_t typed_answer(const std::string& typed, std::uint32_t buttons) {
    // The first letters of the answers that are offered together differ.
    for (const Answer& answer : answers)
        if ((buttons & answer.bit) && !typed.empty() && lower(typed.front()) == lower(answer.name.front()))
            return answer.bit;
    return 0;
}

/// Whether a line waits that was typed already.
bool has_typed_line() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return ::poll(&input, 1, 0) > 0;
}

/// The next line that is typed, without blanks before it; nothing at the end of the input.
/// Throws: vantaro_io::exception_aborted.
std::optional<std::string> read_line(const AbortFlag& interrupt) {
    std::string line;
    while (true) {
        std::array<pollfd, 2> watched{{{STDIN_FILENO, POLLIN, 0}, {interrupt.wait_handle(), POLLIN, 0}}};
        const bool is_ready = ::poll(watched.data(), watched.size(), -1) > 0;
        if (interrupt.is_aborting())
            throw vantaro_io::exception_aborted();
        if (!is_ready)
            continue;
        char c = 0;
        const ssize_t got = ::read(STDIN_FILENO, &c, 1);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return std::nullopt;
        if (c == '\n')
            return line;
        if (c != ' ' || !line.empty())
            line += c;
    }
}

/// "[Yes/No, Enter for Yes] "
std::string choices(std::uint32_t buttons, std::uint32_t default_button) {
    std::string names;
    std::string_view default_name;
    for (const Answer& answer : answers) {
        if (buttons & answer.bit)
            names.append(names.empty() ? "" : "/").append(answer.name);
        if (answer.bit == default_button)
            default_name = answer.name;
    }
    return '[' + names + ", Enter for " + std::string(default_name) + "] ";
}

} // namespace

std::uint32_t TerminalQuestion::ask(const Request& request) {
    const std::uint32_t result = answer(request);
    is_declined_ = (result & refusals) != 0;
    return result;
}

std::uint32_t TerminalQuestion::answer(const Request& request) {
    if (assume_yes_)
        return first_offered(affirmative_order, request.buttons);
    const std::uint32_t cautious = first_offered(cautious_order, request.buttons);
    terminal_.line(std::string(request.title) + ": " + request.message);
    if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0)
        return cautious;
    const std::uint32_t on_enter =
        (request.buttons & request.default_button) != 0 ? request.default_button : cautious;
    while (true) {
        // Nobody says yes to a question that was not there yet by an Enter too many.
        const bool is_typed_before = has_typed_line();
        terminal_.prompt(choices(request.buttons, on_enter));
        std::optional<std::string> typed;
        try {
            typed = read_line(interrupt_);
        } catch (const vantaro_io::exception_aborted&) {
            terminal_.prompt("\n");
            throw;
        }
        if (!typed) {
            terminal_.prompt("\n");
            return cautious;
        }
        if (typed->empty() && !is_typed_before)
            return on_enter;
        if (const std::uint32_t bit = typed_answer(*typed, request.buttons))
            return bit;
    }
}

} // namespace vantaro::core
