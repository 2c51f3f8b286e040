#include "ui/widgets/balloon.h"

#include "ui/widgets/tip_place.h"

#include <QAccessible>
#include <QApplication>
#include <QBitmap>
#include <QEvent>
#include <QPainter>
#include <QScreen>
#include <QTextOption>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace quorvex {

namespace {

// The last two are what a tooltip is on X11 anyway. Asked for from the start, the window is made once, with
// no place that takes the mouse; completed later, it is made a second time with one.
constexpr Qt::WindowFlags window_flags = Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowTransparentForInput
                                         | Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint
                                         | Qt::X11BypassWindowManagerHint | Qt::WindowStaysOnTopHint;

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
    show_with_window();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
    update();
}

void Balloon::take_away() {
    if (control_)
        control_->removeEventFilter(this);
    control_ = nullptr;
    hide();
}

void Balloon::show_with_window() {
    const QWidget& window = *parentWidget();
    // Not QWidget::isActiveWindow(), by which a dialog is active with its owner.
    const bool is_active = QApplication::activeWindow() == &window;
    setVisible(control_ && is_active && window.isVisible() && !window.isMinimized());
}

bool Balloon::eventFilter(QObject*, QEvent* event) {
    if (!control_)
        return false;
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
        place();
        break;
    case QEvent::WindowActivate:
        place();
        [[fallthrough]];
    case QEvent::WindowDeactivate:
    case QEvent::WindowStateChange:
    case QEvent::Hide:
        show_with_window();
        break;
    default:
        break;
    }
    return false;
}

/// Lays the text out, and tells how large a plain box with it is.
QSize Balloon::size_at(int text_width) {
    const int em = fontMetrics().height();
    const int margin = em / 3;
    text_.setTextWidth(-1);
    text_.prepare({}, font());
    if (const int room = std::max(text_width - 2 * margin, em);
        text_width > 0 && text_.size().width() > room) {
        text_.setTextWidth(room);
        text_.prepare({}, font());
    }
    const QSize text_size(static_cast<int>(std::ceil(text_.size().width())),
                          static_cast<int>(std::ceil(text_.size().height())));
    return text_size.grownBy(QMargins(margin, margin, margin, margin));
}

void Balloon::place() {
    if (shape_ == Shape::pointed) {
        setGeometry(place_pointed());
    } else {
        const TipPlace found = find_tip_place(*control_, [this](int width) { return size_at(width); });
        size_at(found.width);
        const int margin = fontMetrics().height() / 3;
        text_corner_ = QPoint(margin, margin);
        outline_ = QPainterPath();
        // Lines run through the middles of pixels.
        outline_.addRoundedRect(QRectF(QPointF(0, 0), found.rect.size()).adjusted(0.5, 0.5, -0.5, -0.5),
                                margin / 2.0, margin / 2.0);
        setGeometry(found.rect);
    }
    apply_mask();
    update();
}

QRect Balloon::place_pointed() {
    const int em = fontMetrics().height();
    const int margin = em / 3;
    const int pointer = em / 2; // its height, and half its width
    const QSize body = size_at(text_width_);
    const QSize size(body.width(), body.height() + pointer);

    const QPoint corner = control_->mapToGlobal(QPoint(0, 0));
    const int aim = corner.x() + control_->width() / 2;
    const QRect screen = control_->screen()->availableGeometry();
    const int bottom = corner.y() + control_->height();
    const bool is_above =
        bottom + size.height() > screen.bottom() && corner.y() - size.height() >= screen.top();
    const int rightmost = std::max(screen.left(), screen.right() + 1 - size.width());
    const QPoint position(std::clamp(aim - size.width() / 2, screen.left(), rightmost),
                          is_above ? corner.y() - size.height() : bottom);

    const int top = is_above ? 0 : pointer;
    text_corner_ = QPoint(margin, top + margin);
    const QRectF box = QRectF(0, top, body.width(), body.height()).adjusted(0.5, 0.5, -0.5, -0.5);
    const double corner_radius = margin / 2.0;
    outline_ = QPainterPath();
    outline_.addRoundedRect(box, corner_radius, corner_radius);
    const double side = corner_radius + pointer;
    const double tip = std::clamp(aim - position.x() + 0.5, side, std::max(side, size.width() - side));
    const double edge = is_above ? box.bottom() : box.top();
    const double point = is_above ? size.height() - 0.5 : 0.5;
    QPainterPath pointing;
    pointing.addPolygon(QPolygonF({{tip - pointer, edge}, {tip, point}, {tip + pointer, edge}}));
    outline_ = outline_.united(pointing).simplified();
    return {position, size};
}

/// Where the desktop composes no windows, what is not the outline would be black.
void Balloon::apply_mask() {
    if (QGuiApplication::platformName() != "xcb")
        return;
    QBitmap mask(size());
    mask.clear();
    QPainter painter(&mask);
    painter.setPen(QPen(Qt::color1, 2));
    painter.setBrush(Qt::color1);
    painter.drawPath(outline_);
    painter.end();
    setMask(mask);
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
