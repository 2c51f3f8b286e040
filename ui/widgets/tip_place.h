// Where a tip about a control may stand so that it hides little of what its dialog has to show.
//
//     const TipPlace place = find_tip_place(box, [&](int width) { return size_of_text(width); });
//
// Main thread.
#pragma once

#include <QRect>

#include <functional>

class QWidget;

namespace quorvex {

struct TipPlace {
    /// On the screen.
    QRect rect;
    /// The width for the text that `rect` has come of.
    int width = 0;
};

/// Just below the control, or else at the side of its dialog that is nearest: where that hides none of the
/// dialog's other boxes, labels and buttons, or where it hides least of them. Always on the control's screen,
/// as far as it fits. `size_at` tells how large the tip is with so much width for its text.
TipPlace find_tip_place(const QWidget& control, const std::function<QSize(int width)>& size_at);

} // namespace quorvex
