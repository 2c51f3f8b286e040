#include "ui/widgets/balloon.h"

#include <QAccessible>
#include <QBitmap>
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
    if (control_)
        control_->removeEventFilter(this);
    control_ = &control;
    control.installEventFilter(this);
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
    const int pointer = shape_ == Shape::pointed ? em / 2 : 0; // its height, and half its width
    text_.setTextWidth(-1);
    text_.prepare({}, font());
    if (const int room = std::max(text_width_ - 2 * margin, em);
        text_width_ > 0 && text_.size().width() > room) {
        text_.setTextWidth(room);
        text_.prepare({}, font());
    }
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
    text_corner_ = QPoint(margin, top + margin);
    // Lines run through the middles of pixels.
    const QRectF box = QRectF(0, top, body.width(), body.height()).adjusted(0.5, 0.5, -0.5, -0.5);
    const double corner_radius = margin / 2.0;
    outline_ = QPainterPath();
    outline_.addRoundedRect(box, corner_radius, corner_radius);
    if (pointer > 0) {
        const double side = corner_radius + pointer;
        const double tip = std::clamp(aim - position.x() + 0.5, side, std::max(side, size.width() - side));
        const double edge = is_above ? box.bottom() : box.top();
        const double point = is_above ? size.height() - 0.5 : 0.5;
        QPainterPath pointing;
        pointing.addPolygon(QPolygonF({{tip - pointer, edge}, {tip, point}, {tip + pointer, edge}}));
        outline_ = outline_.united(pointing).simplified();
    }
    setGeometry(QRect(position, size));
    // Where the desktop composes no windows, what is not the outline would be black.
    if (QGuiApplication::platformName() == "xcb") {
        QBitmap mask(size);
        mask.clear();
        QPainter painter(&mask);
        painter.setPen(QPen(Qt::color1, 2));
        painter.setBrush(Qt::color1);
        painter.drawPath(outline_);
        painter.end();
        setMask(mask);
    }
}

void Balloon::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor edge = palette().color(QPalette::ToolTipText);
    edge.setAlphaF(0.6F);
    painter.fillPath(outline_, palette().brush(QPalette::ToolTipBase));
    painter.strokePath(outline_, QPen(edge, 1));
    painter.setPen(palette().color(QPalette::ToolTipText));
    painter.drawStaticText(text_corner_, text_);
}

} // namespace quorvex
