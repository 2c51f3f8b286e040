// Messages in windows of their own: the program goes on meanwhile.
//
//     WindowMessage message;
//     setup.message = &message;
//     message.set_parent(&main_window);
//
// Main thread.
#pragma once

#include "host/api/user_interaction.h"

#include <QPointer>
#include <QWidget>

namespace vantaro::core {

class WindowMessage final : public StaticService<PopupMessage> {
public:
    /// Messages from now on stand before this window and go with it; nullptr for windows by themselves.
    void set_parent(QWidget* parent) { parent_ = parent; }

    /// The window belongs to the parent, and deletes itself when it is closed. Its text can be selected and
    /// copied, and scrolls where it is long.
    void show(const char* text, std::size_t length, const char* title, std::uint32_t icon) override;

private:
    QPointer<QWidget> parent_;
};

} // namespace vantaro::core
