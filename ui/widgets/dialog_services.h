// What the host does for a dialog window of the component while it exists.
//
//     DialogServices services(window);
//
// Main thread.
#pragma once

#include "host/api/windows.h"

#include <QWidget>

namespace quorvex {

/// The window's entry in the host's registry of modeless dialogs, and its decoration. The host gets the
/// window as a QWidget*.
class DialogServices {
public:
    /// Asks the host for a decoration, where its services are available and it has exactly one place that
    /// hands them out.
    DialogServices();
    /// Leaves the registry.
    ~DialogServices();
    DialogServices(const DialogServices&) = delete;
    DialogServices& operator=(const DialogServices&) = delete;

    /// Enters a window, in place of one that was entered before, and has it decorated.
    void enter(QWidget& window);
    void leave();

private:
    vantaro::Ref<vantaro::DialogDecoration> decoration_;
    QWidget* window_ = nullptr;
};

} // namespace quorvex
