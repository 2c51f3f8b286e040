// The console as a panel of the desktop.
//
//     PanelConsole console(&terminal);               // lines go to standard error as well
//     setup.console = &console;
//     dock.setWidget(console.make_panel(&dock));
//
// Made, and panels asked for, on the main thread, after the QApplication; lines may come from any thread.
#pragma once

#include "host/api/user_interaction.h"
#include "vantaro/terminal/terminal.h"

#include <QStringList>
#include <QWidget>

#include <memory>
#include <string_view>

namespace vantaro::core {

class PanelConsole final : public StaticService<HostConsole> {
public:
    /// How many lines are kept and shown: the newest ones.
    static constexpr std::size_t most_lines = 10000;

    /// `terminal`, which outlives the object, gets every line at once; nullptr for none.
    explicit PanelConsole(Terminal* terminal);
    ~PanelConsole();

    /// Takes a line. It appears in the panels when the main thread gets to it. Control characters, such as
    /// line breaks within, are shown as "_".
    void print(const char* text, std::size_t length) override;

    /// Takes a line that the terminal has already. Main thread.
    void note(std::string_view line);
    /// The lines so far. Main thread.
    QStringList lines() const;

    /// Makes a panel that shows the lines so far and those to come. It may outlive this object, and shows
    /// nothing new then. "Clear" in its context menu empties every panel.
    /// @returns a widget that belongs to `parent`; without one, to the caller.
    QWidget* make_panel(QWidget* parent);

private:
    class Lines;

    Terminal* const terminal_;
    const std::shared_ptr<Lines> lines_;
};

} // namespace vantaro::core
