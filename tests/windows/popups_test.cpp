// Questions, messages, and the host's knowledge of open windows.

#include "tests/windows/window_access.h"
#include "vantaro/windows/dialog_registry.h"
#include "vantaro/windows/window_message.h"
#include "vantaro/windows/window_question.h"

#include <QDialog>
#include <QMessageBox>
#include <QPlainTextEdit>

namespace vantaro::core {
namespace {

using test::with_modal;

constexpr std::uint32_t yes_no_cancel = button::yes | button::no | button::cancel;

PopupQuestion::Request request(std::uint32_t buttons, std::uint32_t default_button) {
    return {"Title", "<b>Really</b>?", buttons, default_button, popup_icon::warning, nullptr};
}

struct Answered {
    const char* name;
    std::uint32_t buttons;
    std::uint32_t default_button;
    std::function<void(QWidget&)> act;
    std::uint32_t answer;
};

TEST(WindowQuestion, Answers) {
    const auto press = [](const char* text) {
        return [text](QWidget& window) { test::press(window, text); };
    };
    const auto key = [](Qt::Key pressed) {
        return [pressed](QWidget& window) {
            ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
            QTest::keyClick(&window, pressed);
        };
    };
    const auto close = [](QWidget& window) { window.close(); };
    const Answered rows[] = {
        {"yes", yes_no_cancel, button::no, press("Yes"), button::yes},
        {"retry", button::abort | button::retry | button::ignore, button::abort, press("Retry"),
         button::retry},
        {"the default by Enter", yes_no_cancel, button::yes, key(Qt::Key_Return), button::yes},
        {"Escape is cancel", yes_no_cancel, button::yes, key(Qt::Key_Escape), button::cancel},
        {"Escape is no", button::yes | button::no, button::yes, key(Qt::Key_Escape), button::no},
        {"Escape is abort", button::abort | button::retry | button::ignore, button::retry,
         key(Qt::Key_Escape), button::abort},
        {"closing is cancel", button::ok | button::cancel, button::ok, close, button::cancel},
        {"only OK", button::ok, button::ok, close, button::ok},
    };
    ModalGuard guard;
    WindowQuestion question(guard);
    for (const Answered& row : rows) {
        SCOPED_TRACE(row.name);
        with_modal(row.act);
        EXPECT_EQ(question.ask(request(row.buttons, row.default_button)), row.answer);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
}

TEST(WindowQuestion, ShowsWhatItIsGivenAndCountsAsOpen) {
    ModalGuard guard;
    WindowQuestion question(guard);
    EXPECT_TRUE(guard.can_create_new());
    with_modal([&](QWidget& window) {
        const auto& box = dynamic_cast<QMessageBox&>(window);
        EXPECT_EQ(box.windowTitle(), "Title");
        EXPECT_EQ(box.text(), "<b>Really</b>?");
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        EXPECT_EQ(box.icon(), QMessageBox::Warning);
        EXPECT_FALSE(guard.can_create_new());
        window.close();
    });
    question.ask(request(yes_no_cancel, button::no));
    EXPECT_TRUE(guard.can_create_new());
}

TEST(WindowQuestion, AParentThatGoesIsTheCautiousAnswer) {
    ModalGuard guard;
    WindowQuestion question(guard);
    auto parent = std::make_unique<QWidget>();
    PopupQuestion::Request ask = request(yes_no_cancel, button::yes);
    ask.parent = parent.get();
    with_modal([&](QWidget&) { parent.reset(); });
    EXPECT_EQ(question.ask(ask), button::cancel);
    EXPECT_TRUE(guard.can_create_new());
}

TEST(ModalGuard, AnybodysModalWindowCounts) {
    ModalGuard guard;
    guard.poke_existing(); // nothing there
    QWidget other;
    other.show();
    QDialog dialog;
    dialog.setModal(true);
    dialog.show();
    EXPECT_FALSE(guard.can_create_new());
    other.activateWindow();
    guard.poke_existing();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
    dialog.close();
    EXPECT_TRUE(guard.can_create_new());

    auto hidden = std::make_unique<QWidget>();
    const ModalGuard::Open open(guard, *hidden);
    EXPECT_FALSE(guard.can_create_new());
    hidden.reset();
    EXPECT_TRUE(guard.can_create_new());
}

TEST(DialogRegistry, ForgetsWhatIsGone) {
    DialogRegistry registry;
    QWidget a;
    auto b = std::make_unique<QWidget>();
    QWidget c;
    for (QWidget* window : {&a, b.get(), &c, &a})
        registry.register_dialog(window);
    registry.register_dialog(nullptr);
    EXPECT_EQ(registry.windows(), (std::vector<QPointer<QWidget>>{&a, b.get(), &c}));
    registry.unregister_dialog(&a);
    b.reset();
    EXPECT_EQ(registry.windows(), std::vector<QPointer<QWidget>>{&c});
}

TEST(WindowMessage, GoesOnAndScrollsWhatIsLong) {
    WindowMessage message;
    QWidget parent;
    message.set_parent(&parent);
    std::string text;
    for (int i = 0; i < 5000; ++i)
        text += "line " + std::to_string(i) + '\n';
    message.show(text.data(), text.size(), "Long", popup_icon::information);
    message.show("short and not all of it", 5, "Short", popup_icon::error);

    const QPointer<QWidget> long_one = test::find_window("Long");
    const QPointer<QWidget> short_one = test::find_window("Short");
    ASSERT_TRUE(long_one && short_one);
    EXPECT_FALSE(long_one->isModal());
    EXPECT_EQ(test::child<QPlainTextEdit>(*long_one).toPlainText().toStdString(), text);
    EXPECT_EQ(test::child<QPlainTextEdit>(*short_one).toPlainText(), "short");
    EXPECT_LT(long_one->height(), 800);
    EXPECT_LT(short_one->height(), long_one->height());
    test::press(*long_one, "OK");
    short_one->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(long_one || short_one);
}

} // namespace
} // namespace vantaro::core
