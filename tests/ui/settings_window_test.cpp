// The frame of the settings dialogs: one report whatever happens, and what the host hears of the windows.

#include "ui/widgets/settings_window.h"

#include "actions/copy_values.h"
#include "actions/fixed_value.h"
#include "actions/format_value.h"
#include "actions/remove_fields.h"
#include "host/api/windows.h"
#include "tests/ui/dialogs_fixture.h"
#include "ui/widgets/validation_tip.h"

namespace quorvex {
namespace {

using namespace vantaro;
using test::Dialog;

class FakeRegistry final : public test::Noting<ModelessDialogRegistry> {
public:
    using Noting::Noting;
    void register_dialog(WindowHandle window) override { host_.note("registered " + title(window)); }
    void unregister_dialog(WindowHandle window) override { host_.note("unregistered " + title(window)); }

    static std::string title(WindowHandle window) {
        const auto* widget = static_cast<QWidget*>(window);
        return widget->windowTitle().toStdString() + (widget->isVisible() ? ", shown" : "");
    }
};

class FakeDecoration final : public test::Noting<DialogDecoration> {
public:
    using Noting::Noting;
    void set_dark(bool) override { host_.note("set_dark"); }
    void add_dialog(WindowHandle window) override { host_.note("dialog " + FakeRegistry::title(window)); }
    void add_controls(WindowHandle window) override { host_.note("controls " + FakeRegistry::title(window)); }
};

class FakeDecorationHook final : public test::Noting<DialogDecorationHook> {
public:
    using Noting::Noting;
    bool is_dark() override { return false; }
    DialogDecoration* create() override {
        host_.note("decoration");
        return make_service<FakeDecoration>(host_).detach();
    }
};

/// Does as a test says when it hears of the end.
class Then final : public HeapService<CompletionNotify> {
public:
    explicit Then(std::function<void()> what) : what_(std::move(what)) {}
    void notify(std::uint32_t) override { what_(); }

private:
    const std::function<void()> what_;
};

using SettingsWindow = test::Dialogs;

TEST_F(SettingsWindow, ReportsOnce) {
    const Dialog dialog = open(CopyValues::kind, "A\nB");
    EXPECT_TRUE(dialog.control<QComboBox>(1006).lineEdit()->hasSelectedText()) << "ready to be typed over";
    dialog.press_ok();
    EXPECT_EQ(host_.take_events(), "notified 1");
    dialog.type(1006, "LATE");
    dialog.press_ok();
    EXPECT_EQ(settings(), "A/B");
    dialog.press_cancel();
    dialog.window().close();
    EXPECT_EQ(host_.take_events(), "");

    const Dialog other = open(CopyValues::kind, "A\nB");
    other.type(1006, "LATE");
    other.press_cancel();
    other.press_ok();
    EXPECT_EQ(host_.take_events(), "notified 0");
    EXPECT_EQ(settings(), "A/B");
}

TEST_F(SettingsWindow, SurvivesWhatItsReportSetsOff) {
    const Ref<Action> action = this->action(CopyValues::kind, "A\nB");
    for (const bool is_accepted : {true, false}) {
        auto owner = std::make_unique<QWidget>();
        const auto done = make_service<Then>([&] { owner.reset(); });
        action->create_settings_dialog(owner.get(), done.get());
        const QPointer<QDialog> window(owner->findChild<QDialog*>());
        is_accepted ? window->accept() : window->reject();
        EXPECT_FALSE(window);
        EXPECT_FALSE(owner);
    }
    // A report that fails is one line on the console; the window goes all the same.
    const auto fails = make_service<Then>([] { throw std::runtime_error("no such luck"); });
    action->create_settings_dialog(owner_.get(), fails.get());
    const QPointer<QDialog> window(owner_->findChild<QDialog*>());
    window->accept();
    EXPECT_EQ(host_.take_events(), "Quorvex: no such luck");
    run_deleted();
    EXPECT_FALSE(window);
}

TEST_F(SettingsWindow, OneMessageAtATime) {
    const Dialog dialog = open(CopyValues::kind, "A\nB");
    dialog.type(1006, "");
    dialog.press_ok();
    dialog.press_ok();
    EXPECT_EQ(dialog.message(), "1006: Please enter a valid field name.");
    const Balloon* first = test::shown_balloon(dialog.window());
    dialog.type(1006, "A");
    dialog.type(1020, "");
    dialog.press_ok();
    EXPECT_EQ(dialog.message(), "1020: Please enter a valid field name.");
    EXPECT_EQ(test::shown_balloon(dialog.window()), first);

    // It points at the middle of the lower edge of its control, and goes where the window goes.
    const auto pointed_at = [&] {
        const QWidget& box = dialog.control(1020);
        return box.mapToGlobal(QPoint(box.width() / 2, box.height()));
    };
    EXPECT_EQ(first->geometry().top(), pointed_at().y());
    EXPECT_NEAR(first->geometry().center().x(), pointed_at().x(), 1);
    EXPECT_EQ(first->text().toStdString(), "Please enter a valid field name.");
    dialog.window().move(150, 120);
    EXPECT_EQ(first->geometry().top(), pointed_at().y());
    EXPECT_NEAR(first->geometry().center().x(), pointed_at().x(), 1);
}

TEST_F(SettingsWindow, GrowsAsItsKindSays) {
    const Dialog dialog = open(SetValue::kind, "=\nb");
    dialog.press_ok();
    const QRect name = dialog.control(1019).geometry();
    const QRect value = dialog.control(1020).geometry();
    const QRect ok = dialog.control(1).geometry();
    dialog.window().resize(dialog.window().size() + QSize(50, 40));
    QCoreApplication::processEvents();
    EXPECT_EQ(dialog.control(1019).geometry(), name.adjusted(0, 0, 50, 0));
    EXPECT_EQ(dialog.control(1020).geometry(), value.adjusted(0, 0, 50, 40));
    EXPECT_EQ(dialog.control(1).geometry(), ok.translated(50, 40));
    const QWidget& box = dialog.control(1019);
    EXPECT_NEAR(test::shown_balloon(dialog.window())->geometry().center().x(),
                box.mapToGlobal(box.rect().center()).x(), 1)
        << "the balloon follows its control";
}

TEST_F(SettingsWindow, MessagesOfSeveralLinesAreNoWiderThanTheirControl) {
    QWidget window;
    window.resize(300, 200);
    QLineEdit edit(&window);
    edit.setGeometry(10, 10, 120, 24);
    window.show();
    ValidationTip tip(window);
    tip.show("one line that is far wider than the box, and may be", edit);
    EXPECT_GT(tip.balloon()->width(), edit.width());
    tip.show("first\nand a second that is far wider than the box is", edit);
    EXPECT_LE(tip.balloon()->width(), edit.width());
    // Where the screen ends below, it stands above.
    const QRect screen = window.screen()->availableGeometry();
    window.move(50, screen.bottom() - 40);
    EXPECT_LT(tip.balloon()->geometry().bottom(), edit.mapToGlobal(QPoint(0, 1)).y());
    tip.close();
    tip.show("late", edit);
    EXPECT_EQ(tip.balloon(), nullptr);
}

TEST_F(SettingsWindow, IsKnownToTheHost) {
    host_.offer<ModelessDialogRegistry>(make_service<FakeRegistry>(host_));
    host_.offer<DialogDecorationHook>(make_service<FakeDecorationHook>(host_));
    const Dialog dialog = open(CopyValues::kind, "A\nB");
    EXPECT_EQ(host_.take_events(),
              "decoration\nregistered Copy values\ndialog Copy values\ncontrols Copy values");
    dialog.press_cancel();
    EXPECT_EQ(host_.take_events(), "notified 0");
    run_deleted();
    EXPECT_EQ(host_.take_events(), "unregistered Copy values");

    // No decoration before the host's services are available, nor when it cannot be told which.
    set_services_available(false);
    open(CopyValues::kind, "A\nB").press_cancel();
    run_deleted();
    EXPECT_EQ(host_.take_events(), "registered Copy values\nnotified 0\nunregistered Copy values");
    set_services_available(true);
    host_.offer<DialogDecorationHook>(make_service<FakeDecorationHook>(host_));
    open(CopyValues::kind, "A\nB").press_cancel();
    run_deleted();
    EXPECT_EQ(host_.take_events(), "registered Copy values\nnotified 0\nunregistered Copy values");
}

TEST_F(SettingsWindow, CanBeUsedWhileItsOwnerIsDisabled) {
    owner_->setEnabled(false);
    const Dialog dialog = open(RemoveField::kind, "A");
    EXPECT_TRUE(dialog.control(1001).isEnabled());
    EXPECT_FALSE(dialog.window().isModal());
    dialog.press_ok();
    EXPECT_EQ(host_.take_events(), "notified 1");
}

TEST_F(SettingsWindow, UntouchedTextsStayByteForByte) {
    const auto value = make_service<SetValue>();
    action_ = value;
    for (const char* text : {"a\nb", "a\r\nb", "a\rb", "a\r|b\r", "\xFF\xFE", "\xE2\x80\xA8"}) {
        value->accept({"Artist", text});
        const Dialog dialog = open(*value);
        dialog.press_ok();
        EXPECT_EQ(value->texts()[0], "Artist");
        EXPECT_EQ(value->texts()[1], text);
        run_deleted();
    }
    // Characters that look like others stay beside what is typed; NUL has no place in a setting.
    value->accept({"A", "a\xC2\xA0"
                        "b\xE2\x80\xA8"
                        "c\r\nd"});
    const Dialog beside = open(*value);
    QTest::keyClicks(&beside.control(1020), "!");
    beside.control<QPlainTextEdit>(1020).insertPlainText(QString(QChar(u'\0')) + "?");
    beside.press_ok();
    EXPECT_EQ(value->texts()[1], "!?a\xC2\xA0"
                                 "b\xE2\x80\xA8"
                                 "c\r\nd");
    run_deleted();
    // What is typed has line breaks of two characters.
    const Dialog dialog = open(*value);
    dialog.control<QPlainTextEdit>(1020).setPlainText("");
    dialog.control(1020).setFocus();
    QTest::keyClicks(&dialog.control(1020), "x");
    QTest::keyClick(&dialog.control(1020), Qt::Key_Return);
    QTest::keyClicks(&dialog.control(1020), "y");
    dialog.press_ok();
    EXPECT_EQ(value->texts()[1], "x\r\ny");
}

TEST_F(SettingsWindow, ConfirmedFormatsFollowTheClock) {
    const Ref<Action> made = action(FormatValue::kind, "A\n%now%");
    action_ = made;
    EXPECT_EQ(host_.take_events(), "clock every 10000000");
    const Dialog plain = open(*made);
    plain.type(1008, "%title%");
    plain.press_ok();
    EXPECT_EQ(host_.take_events(), "clock left\nnotified 1");
    run_deleted();
    TrackInfoRecord info = test::tags("TITLE=[t]");
    made->apply(&track_, info, 0, 1);
    EXPECT_EQ(test::tags_text(info), "TITLE=[t] A=[t]") << "the new pattern is compiled";

    const Dialog timed = open(*made);
    timed.type(1008, "%NOW%");
    timed.press_ok();
    EXPECT_EQ(host_.take_events(), "clock every 10000000\nnotified 1");
    clock_->tell(134'168'619'095'000'000);
    EXPECT_EQ(host_.take_events(), "notified 0") << "the action's own notify";
    run_deleted();
    const Dialog again = open(*made);
    again.press_ok();
    EXPECT_EQ(host_.take_events(), "clock left\nclock every 10000000\nnotified 1");
    made->apply(&track_, info, 0, 1);
    EXPECT_EQ(test::tags_text(info), "TITLE=[t]") << "no time until the next tick";
}

} // namespace
} // namespace quorvex
