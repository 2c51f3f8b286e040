#include "ui/widgets/anchor_resizer.h"

#include <QEvent>

#include <cmath>

namespace quorvex {

namespace {

/// Half a pixel goes away from zero.
int share(int growth, double anchor) {
    return static_cast<int>(std::lround(growth * anchor));
}

} // namespace

AnchorResizer::AnchorResizer(QWidget& window, const DialogControls& controls, const Resizing& resizing)
    : QObject(&window), window_(window), controls_(controls), resizing_(resizing) {
    if (resizing.size_grip)
        grip_ = new QSizeGrip(&window);
    window.installEventFilter(this);
}

void AnchorResizer::record() {
    window_.setMinimumSize(controls_.units().pixels(resizing_.minimum_width, resizing_.minimum_height));
    start_ = window_.size();
    places_.clear();
    for (const AnchorRow& row : resizing_.rows) {
        QWidget& control = controls_.get(row.id);
        places_.push_back({&control, control.geometry(), &row});
    }
    arrange();
}

QSize AnchorResizer::growth() const {
    return start_.isValid() ? window_.size() - start_ : QSize(0, 0);
}

bool AnchorResizer::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::WindowStateChange)
        arrange();
    return false;
}

void AnchorResizer::arrange() {
    const QSize grown = growth();
    for (const Place& place : places_) {
        const AnchorRow& anchors = *place.anchors;
        QRect rect = place.start;
        rect.adjust(share(grown.width(), anchors.left), share(grown.height(), anchors.top),
                    share(grown.width(), anchors.right), share(grown.height(), anchors.bottom));
        place.control->setGeometry(rect);
    }
    if (!grip_)
        return;
    const QSize size = grip_->sizeHint();
    grip_->setGeometry(
        QRect(window_.rect().bottomRight() - QPoint(size.width() - 1, size.height() - 1), size));
    grip_->setVisible(!window_.isMaximized());
}

} // namespace quorvex
