// LineEdit: a box of one line that makes what a person types, pastes or drops fit its rules before it comes
// in. Texts that the program puts in stay as they are, and so does what stands in the box already.
//
// A box that has no more room says so by a beep, and takes nothing at all until something is taken away:
// narrow letters that would still fit behind a refused wide one make no text that anybody has typed.
//
// Main thread.
#pragma once

#include <QLineEdit>

namespace quorvex {

class LineEdit final : public QLineEdit {
public:
    /// By control_flag bits: small letters become capital ones; without control_flag::scrolls, a text grows
    /// no wider than the box. Line breaks become blanks (at either end they go), NUL goes.
    LineEdit(unsigned flags, QWidget* parent);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    /// What comes of a text that is to be inserted in place of the selection.
    QString corrected(const QString& text);
    QString cut_to_fit(const QString& text);

    const unsigned flags_;
    /// How long the text is since something had no room in it; longer than any text otherwise.
    qsizetype full_at_;
};

} // namespace quorvex
