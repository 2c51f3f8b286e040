// Balloon: a small window with a text that points at a control. It takes neither mouse nor keyboard, follows
// the control's window, and is seen while that window is the active one.
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
        /// A plain box near the control, where it hides no other, no wider than the control.
        plain,
    };

    Balloon(QWidget& window, Shape shape);

    /// Shows the text in place of what was shown. A pointed balloon wraps it at `text_width` pixels (0: only
    /// at its own line breaks), and stands above the control where the screen ends below it. While the window
    /// is not active, there is nothing to be seen.
    void show_at(QWidget& control, const QString& text, int text_width = 0);
    /// Until the next show_at().
    void take_away();
    QString text() const { return text_.text(); }
    /// What it points at; nullptr while it is not shown.
    const QWidget* control() const { return isVisible() ? control_.data() : nullptr; }

protected:
    /// Of the window and the control.
    bool eventFilter(QObject* object, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// Shows or hides it, as it has something to say and its window is active.
    void show_with_window();
    QSize size_at(int text_width);
    void place();
    QRect place_pointed();
    void apply_mask();

    const Shape shape_;
    /// nullptr when there is nothing to say.
    QPointer<QWidget> control_;
    QStaticText text_;
    int text_width_ = 0;
    /// In this window's coordinates.
    QPainterPath outline_;
    QPoint text_corner_;
};

} // namespace quorvex
