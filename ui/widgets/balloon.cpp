#include "ui/widgets/balloon.h"

#include <QAccessible>
#include <QEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTextOption>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace quorvex {

namespace {

constexpr Qt::WindowFlags window_flags = Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowTransparentForInput
                                         | Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint;

} // namespace

Balloon::Balloon(QWidget& window, Shape shape) : QWidget(&window, window_flags), shape_(shape) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    setFont(QToolTip::font());
    setPalette(QToolTip::palette());
    text_.setTextFormat(Qt::PlainText);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    text_.setTextOption(option);
    window.installEventFilter(this);
}

void Balloon::show_at(QWidget& control, const QString& text, int text_width) {
    control_ = &control;
    text_.setText(text);
    text_width_ = text_width;
    setAccessibleName(text);
    place();
    show();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
    update();
}

bool Balloon::eventFilter(QObject*, QEvent* event) {
    if (isVisible() && control_ && (event->type() == QEvent::Move || event->type() == QEvent::Resize))
        place();
    return false;
}

void Balloon::place() {
    const int em = fontMetrics().height();
    const int margin = em / 3;
    const int pointer = shape_ == Shape::pointed ? em / 2 : 0;
    text_.setTextWidth(text_width_ > 0 ? std::max(text_width_ - 2 * margin, em) : -1);
    text_.prepare({}, font());
    const QSize text_size(static_cast<int>(std::ceil(text_.size().width())),
                          static_cast<int>(std::ceil(text_.size().height())));
    const QSize body(text_size.width() + 2 * margin, text_size.height() + 2 * margin);
    const QSize size(body.width(), body.height() + pointer);

    const QPoint corner = control_->mapToGlobal(QPoint(0, 0));
    const int aim = corner.x() + control_->width() / 2;
    const QRect screen = control_->screen()->availableGeometry();
    const int bottom = corner.y() + control_->height();
    const bool is_above =
        bottom + size.height() > screen.bottom() && corner.y() - size.height() >= screen.top();
    const int x = shape_ == Shape::pointed ? aim - size.width() / 2 : corner.x();
    const int rightmost = std::max(screen.left(), screen.right() + 1 - size.width());
    const QPoint position(std::clamp(x, screen.left(), rightmost),
                          is_above ? corner.y() - size.height() : bottom);

    const int top = is_above ? 0 : pointer;
    const QRect box(0, top, body.width() - 1, body.height() - 1);
    text_corner_ = QPoint(margin, top + margin);
    outline_.clear();
    outline_ << box.topLeft();
    const int tip = std::clamp(aim - position.x(), pointer, std::max(pointer, box.width() - pointer));
    if (!is_above && pointer > 0)
        outline_ << QPoint(tip - pointer / 2, top) << QPoint(tip, 0) << QPoint(tip + pointer / 2, top);
    outline_ << QPoint(box.x() + box.width(), box.y())
             << QPoint(box.x() + box.width(), box.y() + box.height());
    if (is_above && pointer > 0)
        outline_ << QPoint(tip + pointer / 2, box.height()) << QPoint(tip, size.height() - 1)
                 << QPoint(tip - pointer / 2, box.height());
    outline_ << QPoint(box.x(), box.y() + box.height());
    setGeometry(QRect(position, size));
    // Where the desktop composes no windows, what is not the outline would be black.
    if (pointer > 0 && QGuiApplication::platformName() == "xcb")
        setMask(QRegion(outline_) + QRegion(outline_.translated(1, 0)) + QRegion(outline_.translated(0, 1))
                + QRegion(outline_.translated(1, 1)));
}

void Balloon::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::ToolTipText));
    painter.setBrush(palette().brush(QPalette::ToolTipBase));
    painter.drawPolygon(outline_);
    painter.drawStaticText(text_corner_, text_);
}

} // namespace quorvex
