#include "vantaro/terminal/terminal.h"

#include "vantaro/common/utf8.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <iostream>

namespace vantaro::core {

namespace {

constexpr auto redraw_interval = std::chrono::milliseconds(100);
constexpr std::string_view erase_line = "\r\x1b[K";

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

template <std::size_t n>
std::uint32_t first_offered(const std::array<std::uint32_t, n>& order, std::uint32_t buttons) {
    for (const std::uint32_t bit : order)
        if (buttons & bit)
            return bit;
    return button::ok;
}

void write_all(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t put = ::write(descriptor, text.data(), text.size());
        if (put < 0)
            return; // nobody listens any more
        text.remove_prefix(static_cast<std::size_t>(put));
    }
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

} // namespace

std::string printable(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        const std::optional<std::int32_t> c = next_code_point(text, at);
        if (!c)
            shown += "\xEF\xBF\xBD";
        else if (*c < 0x20 || (*c >= 0x7F && *c < 0xA0))
            shown += '_';
        else
            shown += text.substr(start, at - start);
    }
    return shown;
}

Terminal::Terminal() : interactive_(::isatty(STDERR_FILENO) != 0) {}

void Terminal::line(std::string_view text) {
    const std::lock_guard lock(mutex_);
    std::string out = printable(text) + '\n';
    if (!progress_line_.empty())
        out = std::string(erase_line) + out + progress_line_;
    write_all(STDERR_FILENO, out);
}

void Terminal::hint(std::string_view text) {
    if (interactive_)
        line(text);
}

void Terminal::progress(std::string_view what, std::size_t done, std::size_t total) {
    if (!interactive_)
        return;
    const std::lock_guard lock(mutex_);
    const auto now = std::chrono::steady_clock::now();
    if (!progress_line_.empty() && done != total && now - last_drawn_ < redraw_interval)
        return;
    last_drawn_ = now;
    progress_line_ = std::string(what) + ": " + std::to_string(done) + " of " + std::to_string(total) + " ("
                     + std::to_string(total == 0 ? 100 : done * 100 / total) + " %)";
    write_all(STDERR_FILENO, std::string(erase_line) + progress_line_);
}

void Terminal::end_progress() {
    const std::lock_guard lock(mutex_);
    if (!std::exchange(progress_line_, {}).empty())
        write_all(STDERR_FILENO, "\n");
}

void TerminalConsole::print(const char* text, std::size_t length) {
    terminal_.line({text, length});
}

void TerminalMessage::show(const char* text, std::size_t length, const char* title, std::uint32_t) {
    ++shown_;
    std::string out = std::string(title) + "\n\n" + std::string(text, length);
    if (!out.ends_with('\n'))
        out += '\n';
    write_all(STDOUT_FILENO, out);
}

std::uint32_t TerminalQuestion::ask(const Request& request) {
    if (assume_yes_)
        return first_offered(affirmative_order, request.buttons);
    const std::uint32_t cautious = first_offered(cautious_order, request.buttons);
    terminal_.line(std::string(request.title) + ": " + request.message);
    if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0)
        return cautious;
    std::string choices;
    for (const Answer& answer : answers)
        if (request.buttons & answer.bit)
            choices.append(choices.empty() ? "" : "/").append(answer.name);
    while (true) {
        write_all(STDERR_FILENO, '[' + choices + "] ");
        std::string typed;
        if (!std::getline(std::cin, typed))
            return cautious;
        // The first letters of the answers that are offered together differ.
        for (const Answer& answer : answers)
            if ((request.buttons & answer.bit) && !typed.empty()
                && lower(typed.front()) == lower(answer.name.front()))
                return answer.bit;
    }
}

} // namespace vantaro::core
