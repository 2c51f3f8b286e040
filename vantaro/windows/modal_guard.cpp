#include "vantaro/windows/modal_guard.h"

#include <QApplication>

#include <algorithm>

namespace vantaro::core {

ModalGuard::Open::Open(ModalGuard& guard, QWidget& window) : guard_(guard) {
    guard_.open_.emplace_back(&window);
}

ModalGuard::Open::~Open() {
    guard_.open_.pop_back(); // they are on the stack, and end in reverse
}

bool ModalGuard::can_create_new() {
    return existing() == nullptr;
}

void ModalGuard::poke_existing() {
    QWidget* window = existing();
    if (!window)
        return;
    window->raise();
    window->activateWindow();
    QApplication::alert(window);
}

QWidget* ModalGuard::existing() const {
    if (QWidget* active = QApplication::activeModalWidget())
        return active;
    const auto found =
        std::find_if(open_.rbegin(), open_.rend(), [](const auto& window) { return !window.isNull(); });
    return found == open_.rend() ? nullptr : found->data();
}

} // namespace vantaro::core
