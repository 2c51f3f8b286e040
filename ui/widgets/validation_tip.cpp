#include "ui/widgets/validation_tip.h"

namespace quorvex {

void ValidationTip::show(std::string_view message, QWidget& control) {
    if (is_closed_)
        return;
    if (!balloon_)
        balloon_ = std::make_unique<Balloon>(window_, Balloon::Shape::pointed);
    const bool is_limited = message.find('\n') != std::string_view::npos;
    balloon_->show_at(control, QString::fromUtf8(message.data(), static_cast<qsizetype>(message.size())),
                      is_limited ? control.width() : 0);
}

void ValidationTip::close() {
    is_closed_ = true;
    balloon_.reset();
}

} // namespace quorvex
