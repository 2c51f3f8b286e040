// AnchorResizer: keeps the controls of a window in place while it is resized.
//
//     AnchorResizer resizer(window, controls, resizing);
//     controls.place();
//     resizer.record();
//
// Main thread; the window and `controls` outlive the resizer, or it dies with the window.
#pragma once

#include "ui/dialog_template.h"
#include "ui/widgets/dialog_controls.h"

#include <QObject>
#include <QPointer>
#include <QSizeGrip>

#include <vector>

namespace quorvex {

class AnchorResizer final : public QObject {
public:
    AnchorResizer(QWidget& window, const DialogControls& controls, const Resizing& resizing);

    /// Takes the window and its controls as they are now for what all growth starts from, and gives the
    /// window its smallest size.
    void record();
    /// How far the window has grown since then.
    QSize growth() const;

protected:
    bool eventFilter(QObject* window, QEvent* event) override;

private:
    struct Place {
        QWidget* control;
        QRect start;
        const AnchorRow* anchors;
    };

    void arrange();

    QWidget& window_;
    const DialogControls& controls_;
    const Resizing& resizing_;
    QSize start_;
    std::vector<Place> places_;
    QPointer<QSizeGrip> grip_;
};

} // namespace quorvex
