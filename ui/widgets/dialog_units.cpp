#include "ui/widgets/dialog_units.h"

#include <QFontMetricsF>
#include <QString>

#include <algorithm>
#include <cmath>

namespace quorvex {

namespace {

constexpr int letter_width_units = 4;
constexpr int letter_height_units = 8;

} // namespace

DialogUnits::DialogUnits(const QFont& font) {
    const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    const QFontMetricsF metrics(font);
    width_ = metrics.horizontalAdvance(letters) / static_cast<double>(letters.size()) / letter_width_units;
    height_ = metrics.height() / letter_height_units;
}

void DialogUnits::make_room(const QSize& pixels, int width_units, int height_units) {
    width_ = std::max(width_, static_cast<double>(pixels.width()) / width_units);
    height_ = std::max(height_, static_cast<double>(pixels.height()) / height_units);
}

int DialogUnits::horizontal(int units) const {
    return static_cast<int>(std::lround(units * width_));
}

int DialogUnits::vertical(int units) const {
    return static_cast<int>(std::lround(units * height_));
}

QSize DialogUnits::pixels(int width, int height) const {
    return {horizontal(width), vertical(height)};
}

QRect DialogUnits::pixels(const DialogRect& rect) const {
    const QPoint corner(horizontal(rect.x), vertical(rect.y));
    const QPoint opposite(horizontal(rect.x + rect.width), vertical(rect.y + rect.height));
    return {corner, QSize(opposite.x() - corner.x(), opposite.y() - corner.y())};
}

} // namespace quorvex
