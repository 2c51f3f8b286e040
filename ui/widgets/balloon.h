// Balloon: a small window with a text that points at a control. It takes neither mouse nor keyboard, and
// follows the control's window.
//
//     Balloon balloon(window, Balloon::Shape::pointed);
//     balloon.show_at(edit, "Please enter a value.", edit.width());
//
// Main thread; it belongs to the window that it was made for.
#pragma once

#include <QPainterPath>
#include <QPointer>
#include <QStaticText>
#include <QWidget>

namespace quorvex {

class Balloon final : public QWidget {
public:
    enum class Shape {
        /// Centred below the control, with a tip that points at the middle of its bottom edge.
        pointed,
        /// A plain box below the control, flush with its left edge.
        plain,
    };

    Balloon(QWidget& window, Shape shape);

    /// Shows the text, wrapped at `text_width` pixels (0: only at its own line breaks), in place of what was
    /// shown. Where the screen ends below the control, it stands above it.
    void show_at(QWidget& control, const QString& text, int text_width = 0);
    QString text() const { return text_.text(); }
    /// What it points at; nullptr while it is not shown.
    const QWidget* control() const { return isVisible() ? control_.data() : nullptr; }

protected:
    /// Of the window and the control.
    bool eventFilter(QObject* object, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void place();

    const Shape shape_;
    QPointer<QWidget> control_;
    QStaticText text_;
    int text_width_ = 0;
    /// In this window's coordinates.
    QPainterPath outline_;
    QPoint text_corner_;
};

} // namespace quorvex
