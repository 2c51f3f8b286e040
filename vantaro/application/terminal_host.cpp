#include "vantaro/application/terminal_host.h"

#include "vantaro/terminal/update_lines.h"

namespace vantaro::core {

TerminalHost::TerminalHost(HostSetup setup, bool answers_yes)
    : question_(terminal_, answers_yes, interrupt_.flag()), host_(completed(std::move(setup))) {}

HostSetup TerminalHost::completed(HostSetup setup) {
    setup.interrupt = &interrupt_;
    setup.console = &console_;
    setup.message = &message_;
    setup.question = &question_;
    if (!setup.make_watcher)
        setup.make_watcher = [this](std::size_t, WindowHandle) {
            return std::make_unique<UpdateLinesAndSummary>(terminal_, "Updating");
        };
    return setup;
}

} // namespace vantaro::core
