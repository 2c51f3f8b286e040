#include "vantaro/terminal/terminal.h"

#include "vantaro/common/utf8.h"
#include "vantaro/terminal/standard_output.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace vantaro::core {

namespace {

constexpr auto redraw_interval = std::chrono::milliseconds(100);
constexpr std::string_view erase_line = "\r\x1b[K";

void write_all(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t put = ::write(descriptor, text.data(), text.size());
        if (put < 0)
            return; // nobody listens any more
        text.remove_prefix(static_cast<std::size_t>(put));
    }
}

bool is_shown(std::int32_t c) {
    struct Range {
        std::int32_t first;
        std::int32_t last;
    };
    constexpr std::array<Range, 6> not_shown{{{0, 0x1F},
                                              {0x7F, 0x9F},
                                              {0x61C, 0x61C},     // a direction mark
                                              {0x200E, 0x200F},   // direction marks
                                              {0x2028, 0x202E},   // separators, embeddings and overrides
                                              {0x2066, 0x2069}}}; // isolates
    return std::ranges::none_of(not_shown,
                                [&](const Range& range) { return range.first <= c && c <= range.last; });
}

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// Calls `show(code point)` for what is not shown as it is; it returns what stands in its place.
template <class Show>
std::string shown_with(std::string_view text, const Show& show) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        const std::optional<std::int32_t> c = next_code_point(text, at);
        if (!c)
            result += replacement;
        else if (is_shown(*c))
            result += text.substr(start, at - start);
        else
            result += show(*c);
    }
    return result;
}

} // namespace

std::string printable(std::string_view text) {
    return shown_with(text, [](std::int32_t) { return '_'; });
}

std::string printable_text(std::string_view text) {
    return shown_with(text,
                      [](std::int32_t c) { return c == '\n' || c == '\t' ? static_cast<char>(c) : '_'; });
}

std::string printable_json(std::string_view json) {
    return shown_with(json, [](std::int32_t c) -> std::string {
        if (c < 0x20)
            return {static_cast<char>(c)}; // between the values
        std::array<char, 11> escape{};
        std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
        return escape.data();
    });
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

void Terminal::prompt(std::string_view text) {
    const std::lock_guard lock(mutex_);
    write_all(STDERR_FILENO, text);
}

void TerminalConsole::print(const char* text, std::size_t length) {
    terminal_.line({text, length});
}

void TerminalMessage::show(const char* text, std::size_t length, const char* title, std::uint32_t) {
    ++shown_;
    std::string out = printable(title) + "\n\n" + printable_text({text, length});
    if (!out.ends_with('\n'))
        out += '\n';
    print_output_at_once(out);
}

} // namespace vantaro::core
