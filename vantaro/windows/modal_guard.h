// One modal window at a time, for the host and all components together.
//
//     ModalGuard guard;
//     registry.add_own<ModalDialogGuard>(guard);
//     ...
//     const ModalGuard::Open open(guard, box);       // while the window is being shown
//     box.exec();
//
// Main thread.
#pragma once

#include "host/api/windows.h"

#include <QPointer>
#include <QWidget>

#include <vector>

namespace vantaro::core {

class ModalGuard final : public StaticService<ModalDialogGuard> {
public:
    /// Says that a window is open as a modal one, also before it is shown and while it is hidden.
    class Open {
    public:
        /// `guard` outlives the object; the window need not.
        Open(ModalGuard& guard, QWidget& window);
        ~Open();
        Open(const Open&) = delete;
        Open& operator=(const Open&) = delete;

    private:
        ModalGuard& guard_;
    };

    /// Whether no modal window is open, whoever opened it.
    bool can_create_new() override;
    /// Brings the innermost modal window to the front and makes it ask for attention; nothing when there is
    /// none.
    void poke_existing() override;

private:
    QWidget* existing() const;

    /// By the objects Open that exist, outermost first; empty where the window has gone before.
    std::vector<QPointer<QWidget>> open_;
};

} // namespace vantaro::core
