// The terminal as the host uses it: lines on standard error, and a progress line below them.
//
//     Terminal terminal;
//     terminal.progress("Updating", 12, 100);
//     terminal.line("a.flac: Access denied");        // the progress line makes room and comes back
//
// Any thread; messages on the main thread.
#pragma once

#include "host/api/user_interaction.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace vantaro::core {

/// One line: the text with every character that a terminal might act upon, or that changes the order in which
/// others are shown (controls, line and paragraph separators, direction marks) as "_", and every byte that is
/// not UTF-8 as a replacement character.
std::string printable(std::string_view text);
/// The same for a text of several lines: it keeps its line breaks and tabs.
std::string printable_text(std::string_view text);
/// The same for JSON, which stays what it is: the characters as escapes. Its line breaks are kept.
std::string printable_json(std::string_view json);

class Terminal {
public:
    Terminal();

    /// Whether standard error is a terminal.
    bool is_interactive() const { return interactive_; }
    /// Prints one line to standard error.
    void line(std::string_view text);
    /// Prints one line for a person: only where standard error is a terminal.
    void hint(std::string_view text);
    /// Shows how far something has come; only where standard error is a terminal, and a few times a second.
    void progress(std::string_view what, std::size_t done, std::size_t total);
    void end_progress();
    /// Prints the beginning of a line, which a person will go on with: a text of the program's own, as it is.
    void prompt(std::string_view text);

private:
    std::mutex mutex_; // guards everything below
    const bool interactive_;
    std::string progress_line_;
    std::chrono::steady_clock::time_point last_drawn_;
};

class TerminalConsole final : public StaticService<HostConsole> {
public:
    explicit TerminalConsole(Terminal& terminal) : terminal_(terminal) {}
    void print(const char* text, std::size_t length) override;

private:
    Terminal& terminal_;
};

/// Messages go to standard output.
class TerminalMessage final : public StaticService<PopupMessage> {
public:
    void show(const char* text, std::size_t length, const char* title, std::uint32_t icon) override;
    /// How many messages were shown.
    std::size_t shown() const { return shown_; }

private:
    std::size_t shown_ = 0;
};

} // namespace vantaro::core
