#include "ui/widgets/tip_place.h"

#include <QGroupBox>
#include <QPushButton>
#include <QScreen>
#include <QSizeGrip>

#include <algorithm>
#include <vector>

namespace quorvex {

namespace {

QRect on_screen(const QWidget& control) {
    return {control.mapToGlobal(QPoint(0, 0)), control.size()};
}

struct Shown {
    /// On the screen.
    QRect place;
    double importance;
};

/// What shows something in the dialog of the control. Most of all, the control itself is to be seen.
std::vector<Shown> all_shown(const QWidget& control) {
    std::vector<Shown> all;
    for (const QWidget* other : control.parentWidget()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        if (!other->isWindow() && other->isVisible() && !dynamic_cast<const QGroupBox*>(other)
            && !dynamic_cast<const QSizeGrip*>(other))
            all.push_back({on_screen(*other), other == &control ? 10.0 : 1.0});
    QRect title = control.window()->frameGeometry();
    title.setBottom(control.window()->geometry().top() - 1);
    all.push_back({title, 1});
    return all;
}

/// How wide a tip may be that leaves the buttons just below the control free.
int free_width(const QWidget& control) {
    const QRect place = control.geometry();
    int right = place.right();
    for (const QPushButton* button : control.parentWidget()->findChildren<QPushButton*>()) {
        const QRect other = button->geometry();
        const bool is_near =
            other.top() > place.bottom() && other.top() < place.bottom() + 2 * place.height();
        if (is_near && other.left() > place.center().x())
            right = std::min(right, other.left() - place.height() / 4);
    }
    return right - place.left();
}

/// The sum of what is hidden of each.
double hidden(const QRect& tip, const std::vector<Shown>& all) {
    double sum = 0;
    for (const auto& [place, importance] : all) {
        const QRect common = place & tip;
        if (!common.isEmpty())
            sum += importance * common.width() * common.height() / place.width() / place.height();
    }
    return sum;
}

/// In pixels, along both axes.
int distance(const QRect& one, const QRect& other) {
    const int across = std::max(one.left() - other.right(), other.left() - one.right());
    const int down = std::max(one.top() - other.bottom(), other.top() - one.bottom());
    return std::max(0, across) + std::max(0, down);
}

QRect moved_onto(QRect rect, const QRect& screen) {
    rect.translate(std::min(0, screen.right() - rect.right()), std::min(0, screen.bottom() - rect.bottom()));
    rect.translate(std::max(0, screen.left() - rect.left()), std::max(0, screen.top() - rect.top()));
    return rect;
}

} // namespace

TipPlace find_tip_place(const QWidget& control, const std::function<QSize(int width)>& size_at) {
    const QRect box = on_screen(control);
    const QRect window = control.window()->frameGeometry();
    const int narrow = free_width(control);
    const int wide = box.width();
    const QSize size = size_at(wide);
    const int beside = box.bottom() + 1 - size.height();
    const TipPlace places[] = {
        {{QPoint(box.left(), box.bottom() + 1), size_at(narrow)}, narrow},
        {{QPoint(box.left(), window.bottom() + 1), size}, wide},
        {{QPoint(box.left(), window.top() - size.height()), size}, wide},
        {{QPoint(window.right() + 1, beside), size}, wide},
        {{QPoint(window.left() - size.width(), beside), size}, wide},
    };
    const std::vector<Shown> shown = all_shown(control);
    const QRect screen = control.screen()->availableGeometry();
    TipPlace best;
    double lowest = -1;
    for (const TipPlace& place : places) {
        const TipPlace moved{moved_onto(place.rect, screen), place.width};
        constexpr double a_pixel = 1e-5; // the way counts little
        const double cost = hidden(moved.rect, shown) + a_pixel * distance(box, moved.rect);
        if (lowest >= 0 && cost >= lowest)
            continue;
        lowest = cost;
        best = moved;
    }
    return best;
}

} // namespace quorvex
