// An open dialog, as a person sees and uses it.
//
//     dialog.type(1006, "genre");
//     dialog.press_ok();
//     EXPECT_EQ(dialog.message(), "1020: Please enter a valid field name.");
#pragma once

#include "ui/widgets/balloon.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <stdexcept>
#include <string>

namespace quorvex::test {

/// The balloon of a window that is shown, of the shape.
inline const Balloon* shown_balloon(const QWidget& window) {
    for (QWidget* child : window.findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        if (const auto* balloon = dynamic_cast<const Balloon*>(child); balloon && balloon->isVisible())
            return balloon;
    return nullptr;
}

/// One open dialog, by the ids of its controls.
class Dialog {
public:
    explicit Dialog(QDialog* window) : window_(window) {}

    QDialog& window() const { return *window_; }
    bool is_open() const { return window_ && window_->isVisible(); }
    bool is_gone() const { return !window_; }

    template <class Widget = QWidget>
    Widget& control(int id) const {
        auto* found = window_->findChild<Widget*>(QString::number(id));
        if (!found)
            throw std::invalid_argument("no control " + std::to_string(id));
        return *found;
    }
    std::string text(int id) const {
        QWidget* widget = &control(id);
        if (const auto* box = dynamic_cast<QComboBox*>(widget))
            return box->currentText().toStdString();
        if (const auto* lines = dynamic_cast<QPlainTextEdit*>(widget))
            return lines->toPlainText().toStdString();
        if (const auto* check = dynamic_cast<QCheckBox*>(widget))
            return check->isChecked() ? "checked" : "";
        return dynamic_cast<QLineEdit&>(*widget).text().toStdString();
    }
    /// By keys, in place of all that stands there. A check box is clicked.
    void type(int id, const std::string& text) const {
        QWidget& widget = control(id);
        if (dynamic_cast<QCheckBox*>(&widget)) {
            QTest::keyClick(&widget, Qt::Key_Space);
            return;
        }
        widget.setFocus();
        QTest::keySequence(&widget, QKeySequence::SelectAll);
        QTest::keyClick(&widget, Qt::Key_Delete);
        for (const QChar character : QString::fromStdString(text)) {
            if (character == u'\n') {
                QTest::keyClick(&widget, Qt::Key_Return);
                continue;
            }
            if (character.unicode() < 0x80) {
                QTest::keyClick(&widget, character.toLatin1());
                continue;
            }
            QInputMethodEvent composed;
            composed.setCommitString(character);
            QCoreApplication::sendEvent(&widget, &composed);
        }
        QTest::keyClick(&widget, Qt::Key_Delete); // what completion has appended
    }
    void press_ok() const { control<QPushButton>(1).click(); }
    void press_cancel() const { control<QPushButton>(2).click(); }

    /// What is said of the input, with the control that it is said at; "" for nothing.
    std::string message() const {
        const Balloon* balloon = shown_balloon(*window_);
        return balloon ? (balloon->control()->objectName() + ": " + balloon->text()).toStdString() : "";
    }
    /// The id of the control that has the focus.
    int focused() const {
        const QWidget* focus = window_->focusWidget();
        return focus ? focus->objectName().toInt() : 0;
    }

private:
    QPointer<QDialog> window_;
};

} // namespace quorvex::test
