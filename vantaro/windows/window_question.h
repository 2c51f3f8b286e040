// Questions in a window.
//
//     ModalGuard guard;
//     WindowQuestion question(guard);
//     setup.question = &question;
//
// Main thread.
#pragma once

#include "host/api/user_interaction.h"
#include "vantaro/windows/modal_guard.h"

namespace vantaro::core {

class WindowQuestion final : public StaticService<PopupQuestion> {
public:
    /// `guard`, which outlives the object, knows of every question while it is open.
    explicit WindowQuestion(ModalGuard& guard) : guard_(guard) {}

    /// Handles events until a button is pressed. Escape, the close box, and a parent that goes away
    /// meanwhile are the cautious answer: cancel, else no, else abort, else what else there is.
    std::uint32_t ask(const Request& request) override;

private:
    ModalGuard& guard_;
};

} // namespace vantaro::core
