// A host that says and asks everything in the terminal.
//
//     QCoreApplication qt(argc, argv);
//     TerminalHost program(setup, answers_yes);
//     program.host().load_components();
//
// Main thread only. It takes Ctrl+C and its kin for as long as it lives, so there is one at a time.
#pragma once

#include "vantaro/application/host.h"
#include "vantaro/terminal/question.h"

namespace vantaro::core {

class TerminalHost {
public:
    /// Of `setup` it takes the folders, `jobs`, `code_page`, and `make_watcher` where that is set; otherwise
    /// updates show their progress, and a summary at the end, in the terminal. With `answers_yes` every
    /// question is answered with yes. Throws: as Host does.
    explicit TerminalHost(HostSetup setup, bool answers_yes = false);

    Host& host() { return host_; }
    Terminal& terminal() { return terminal_; }
    const TerminalMessage& message() const { return message_; }
    const TerminalQuestion& question() const { return question_; }

private:
    HostSetup completed(HostSetup setup);

    Interrupt interrupt_;
    Terminal terminal_;
    TerminalConsole console_{terminal_};
    TerminalMessage message_;
    TerminalQuestion question_;
    Host host_;
};

} // namespace vantaro::core
