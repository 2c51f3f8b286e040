// A host that says and asks everything in windows, and its main window.
//
//     Interrupt interrupt;
//     QApplication qt(argc, argv);
//     WindowHost program(setup, interrupt);
//     program.show();
//     QApplication::exec();                          // until the window has closed
//
// Main thread only.
#pragma once

#include "vantaro/desktop/main_window.h"
#include "vantaro/windows/modal_guard.h"
#include "vantaro/windows/window_message.h"
#include "vantaro/windows/window_question.h"

#include <memory>

namespace vantaro::core {

class WindowHost {
public:
    /// Loads the components and makes the window, which is not shown yet. Of `setup` it takes the folders,
    /// `jobs` and `code_page`. When the interrupt comes the window closes without a question. The event loop
    /// is told to end when the window has closed.
    /// Throws: as Host does.
    WindowHost(HostSetup setup, Interrupt& interrupt);
    /// Handles events until the updates under way have ended, and stores the configurations.
    ~WindowHost();

    Host& host() { return host_; }
    MainWindow& window() { return *window_; }
    /// Shows the window, and before it what was reported while everything started.
    void show();

private:
    HostSetup completed(HostSetup setup, Interrupt& interrupt);
    void tell(const QStringList& lines);

    const std::string config_dir_;
    Terminal terminal_;
    PanelConsole console_{&terminal_};
    WindowMessage message_;
    ModalGuard guard_;
    WindowQuestion question_{guard_};
    DialogRegistry dialogs_;
    Host host_;
    std::unique_ptr<MainWindow> window_;
};

} // namespace vantaro::core
