// Settings dialogs as real widgets, for the kinds as the component registers them.
//
//     Dialog dialog = open(CopyValues::kind, "A\nB");
//     dialog.type(1006, "genre");
//     dialog.press_ok();
//     EXPECT_EQ(dialog.message(), "1020: Please enter a valid field name.");
#pragma once

#include "tests/actions/kinds_fixture.h"
#include "tests/ui/dialog_driver.h"
#include "ui/widgets/settings_window.h"

#include <memory>

namespace quorvex::test {

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
