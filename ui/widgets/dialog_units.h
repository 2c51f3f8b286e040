// Dialog units: what positions and sizes of dialog templates are counted in.
//
//     const DialogUnits units(window.font());
//     label->setGeometry(units.pixels({4, 4, 66, 8}));
//
// Four horizontal units are the average width of a letter of the font, eight vertical ones its height. Pixels
// are device-independent ones.
#pragma once

#include "ui/dialog_template.h"

#include <QFont>
#include <QRect>
#include <QSize>

namespace quorvex {

class DialogUnits {
public:
    explicit DialogUnits(const QFont& font);

    /// Makes units so large that a control of the template's size in units has room for `pixels`.
    void make_room(const QSize& pixels, int width_units, int height_units);

    QSize pixels(int width, int height) const;
    /// Rounds edges, so that controls that meet in the template meet here.
    QRect pixels(const DialogRect& rect) const;

private:
    int horizontal(int units) const;
    int vertical(int units) const;

    /// Pixels of one unit.
    double width_;
    double height_;
};

} // namespace quorvex
