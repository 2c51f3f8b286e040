#include "ui/widgets/placement.h"

#include "component/configuration.h"

#include <QApplication>
#include <QScreen>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvex {

namespace {

constexpr std::int32_t no_size = -1;
constexpr std::int32_t no_offset = std::numeric_limits<std::int32_t>::min();

ConfigPlacement& stored_placement() {
    return static_cast<ConfigPlacement&>(configuration_variable(setting::editor_placement));
}

int scaled(std::int32_t stored, double now, std::int32_t then) {
    constexpr double most = 1 << 20; // beyond every screen, and safe to add to
    const double value = then > 0 ? stored * now / then : stored;
    return static_cast<int>(std::lround(std::clamp(value, -most, most)));
}

/// The place of the owner, when it is minimised that which it comes back to.
QPoint corner_of(const QWidget& owner) {
    return owner.isMinimized() ? owner.normalGeometry().topLeft() : owner.frameGeometry().topLeft();
}

/// Where windows begin: with their frames, and, since a frame is not known before its window is shown,
/// within.
bool covers_another(const QWidget& window, const QRect& client, const QMargins& frame) {
    return std::ranges::any_of(QApplication::topLevelWidgets(), [&](const QWidget* other) {
        return other != &window && other->isVisible() && other->isWindow()
               && (other->frameGeometry().topLeft() == client.marginsAdded(frame).topLeft()
                   || other->geometry().topLeft() == client.topLeft());
    });
}

QMargins frame_of(const QWidget& window) {
    const QRect inside = window.geometry();
    const QRect outside = window.frameGeometry();
    return QMargins(inside.left() - outside.left(), inside.top() - outside.top(),
                    outside.right() - inside.right(), outside.bottom() - inside.bottom());
}

/// The frame is known once the window is shown; it is that of other windows, unless they fill the screen.
QMargins expected_frame(const QWidget& window) {
    constexpr Qt::WindowStates filling = Qt::WindowMaximized | Qt::WindowFullScreen | Qt::WindowMinimized;
    QMargins frame(0, window.style()->pixelMetric(QStyle::PM_TitleBarHeight), 0, 0);
    for (const QWidget* other : QApplication::topLevelWidgets())
        if (other->isVisible() && !(other->windowState() & filling)
            && (other->windowType() == Qt::Window || other->windowType() == Qt::Dialog))
            return frame_of(*other);
    return frame;
}

QRect moved_into(const QRect& area, QRect place) {
    place.translate(std::min(0, area.right() - place.right()), std::min(0, area.bottom() - place.bottom()));
    place.translate(std::max(0, area.left() - place.left()), std::max(0, area.top() - place.top()));
    return place;
}

} // namespace

void restore_placement(QWidget& window, const QWidget* owner) {
    const auto [width, height, x, y, dpi_x, dpi_y] = stored_placement().get();
    const QScreen* screen = owner ? owner->screen() : window.screen();
    const double now_x = screen->logicalDotsPerInchX();
    const double now_y = screen->logicalDotsPerInchY();
    QRect client(QPoint(0, 0), window.size());
    if (width != no_size && height != no_size)
        client.setSize(QSize(scaled(width, now_x, dpi_x), scaled(height, now_y, dpi_y))
                           .expandedTo(window.minimumSize()));
    if (owner && x != no_offset && y != no_offset)
        client.moveTopLeft(corner_of(*owner) + QPoint(scaled(x, now_x, dpi_x), scaled(y, now_y, dpi_y)));
    else
        client.moveCenter(owner ? owner->frameGeometry().center() : screen->availableGeometry().center());

    const QMargins frame = expected_frame(window);
    const int step = std::max(1, window.style()->pixelMetric(QStyle::PM_TitleBarHeight));
    const auto step_aside = [&] {
        while (covers_another(window, client, frame))
            client.translate(step, step);
    };
    step_aside();
    const QScreen* nearest = QGuiApplication::screenAt(client.center());
    const QRect area = (nearest ? nearest : screen)->availableGeometry();
    const auto keep_on_screen = [&] {
        client = moved_into(area, client.marginsAdded(frame)).marginsRemoved(frame);
    };
    keep_on_screen();
    if (covers_another(window, client, frame)) {
        // They have reached the corner of the screen: on from the other one.
        client.moveTopLeft(area.topLeft() + QPoint(frame.left(), frame.top()));
        step_aside();
        keep_on_screen();
    }
    window.setGeometry(client);
}

void save_placement(const QWidget& window, const QWidget* owner) {
    const QRect client =
        window.isMaximized() || window.isMinimized() ? window.normalGeometry() : window.geometry();
    const QPoint offset = owner ? client.topLeft() - corner_of(*owner) : QPoint(no_offset, no_offset);
    const QScreen* screen = window.screen();
    stored_placement().set({client.width(), client.height(), offset.x(), offset.y(),
                            static_cast<std::int32_t>(std::lround(screen->logicalDotsPerInchX())),
                            static_cast<std::int32_t>(std::lround(screen->logicalDotsPerInchY()))});
}

} // namespace quorvex
