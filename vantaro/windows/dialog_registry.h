// The modeless dialogs that components have open.
//
//     DialogRegistry dialogs;
//     registry.add_own<ModelessDialogRegistry>(dialogs);
//     ...
//     for (const QPointer<QWidget>& window : dialogs.windows()) window->close();
//
// Main thread.
#pragma once

#include "host/api/windows.h"

#include <QPointer>
#include <QWidget>

#include <vector>

namespace vantaro::core {

class DialogRegistry final : public StaticService<ModelessDialogRegistry> {
public:
    /// Does nothing for nullptr and for a window that is registered already.
    void register_dialog(WindowHandle window) override;
    void unregister_dialog(WindowHandle window) override;

    /// What is open, in the order in which it was registered. A window that was deleted without a word is not
    /// among them.
    std::vector<QPointer<QWidget>> windows() const;

private:
    std::vector<QPointer<QWidget>> windows_;
};

} // namespace vantaro::core
