// Settings dialogs as real widgets, for the kinds as the component registers them.
//
//     Dialog dialog = open(CopyValues::kind, "A\nB");
//     dialog.type(1006, "genre");
//     dialog.press_ok();
//     EXPECT_EQ(dialog.message(), "1020: Please enter a valid field name.");
#pragma once

#include "tests/actions/kinds_fixture.h"
#include "ui/widgets/balloon.h"
#include "ui/widgets/settings_window.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <memory>

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

class Dialogs : public Kinds {
protected:
    Dialogs() {
        set_settings_dialog_opener(open_settings_window);
        owner_->show();
    }
    ~Dialogs() override {
        owner_.reset();
        run_deleted();
        set_settings_dialog_opener(nullptr);
    }

    /// Lets windows that delete themselves do so.
    static void run_deleted() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    Dialog open(Action& action) {
        action.create_settings_dialog(owner_.get(), notify_.get());
        const auto windows = owner_->findChildren<QDialog*>(Qt::FindDirectChildrenOnly);
        if (windows.empty())
            throw std::invalid_argument("no dialog");
        QApplication::setActiveWindow(windows.back());
        return Dialog(windows.back());
    }
    Dialog open(const Guid& kind, const std::string& parameters) {
        action_ = action(kind, parameters);
        return open(*action_);
    }
    /// The settings of the action whose dialog was opened last, with "/" between them.
    std::string settings() const {
        std::string text;
        for (const std::string& setting : dynamic_cast<EditableSettings&>(*action_).texts())
            text += (text.empty() ? "" : "/") + setting;
        return text;
    }

    std::unique_ptr<QWidget> owner_ = std::make_unique<QWidget>();
    Ref<Action> action_;
};

} // namespace quorvex::test
