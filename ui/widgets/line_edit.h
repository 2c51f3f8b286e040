// LineEdit: a box of one line that makes what a person types, pastes or drops fit its rules before it comes
// in. Texts that the program puts in stay as they are, and so does what stands in the box already.
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

private:
    /// What comes of a text that is to be inserted in place of the selection.
    QString corrected(const QString& text) const;
    QString cut_to_fit(QString text) const;

    const unsigned flags_;
};

} // namespace quorvex
