// Questions in the terminal.
//
//     TerminalQuestion question(terminal, answers_yes, interrupt.flag());
//     registry.add_only<PopupQuestion>(question, "questions");
//
// Main thread.
#pragma once

#include "host/api/abort_flag.h"
#include "host/api/user_interaction.h"
#include "vantaro/terminal/terminal.h"

namespace vantaro::core {

/// Asks where a person sits at the terminal; otherwise, and where the input ends, takes the cautious answer,
/// or the affirmative one where the program was told so. Enter alone is the question's default button.
class TerminalQuestion final : public StaticService<PopupQuestion> {
public:
    /// The others outlive the object.
    TerminalQuestion(Terminal& terminal, bool assume_yes, const AbortFlag& interrupt)
        : terminal_(terminal), assume_yes_(assume_yes), interrupt_(interrupt) {}

    /// Throws: vantaro_io::exception_aborted when the program is asked to end before the answer.
    std::uint32_t ask(const Request& request) override;
    /// Whether the latest answer was one of those that refuse: cancel, no, abort.
    bool is_declined() const { return is_declined_; }

private:
    std::uint32_t answer(const Request& request);

    Terminal& terminal_;
    const bool assume_yes_;
    const AbortFlag& interrupt_;
    bool is_declined_ = false;
};

} // namespace vantaro::core
