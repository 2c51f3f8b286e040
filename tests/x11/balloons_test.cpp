// Balloons among the windows of a desktop: they take no clicks, and are seen with their own window only.

#include "actions/split_field.h"
#include "tests/ui/dialogs_fixture.h"

#include <QProcess>
#include <QVBoxLayout>

namespace quorvex {
namespace {

using namespace vantaro;
using test::Dialog;

/// Tells the display what the person does.
void xdotool(const QStringList& arguments) {
    ASSERT_EQ(QProcess::execute("xdotool", arguments), 0) << arguments.join(' ').toStdString();
}

/// Repeats what a window manager may not heed while it is busy with windows that have just come up.
bool do_until(const QStringList& arguments, const std::function<bool()>& is_so) {
    for (int i = 0; i < 10 && !is_so(); ++i) {
        xdotool(arguments);
        if (QTest::qWaitFor(is_so, 500))
            return true;
    }
    return is_so();
}

bool click_until(const QPoint& place, const std::function<bool()>& is_so) {
    return do_until({"mousemove", QString::number(place.x()), QString::number(place.y()), "click", "1"},
                    is_so);
}

bool wait_for(const std::function<bool()>& is_so) {
    return QTest::qWaitFor(is_so, 5000);
}

/// As the display has it; QWidget::isActiveWindow() would count a dialog with its owner.
bool is_active(const QWidget& window) {
    return window.windowHandle() && QGuiApplication::focusWindow() == window.windowHandle();
}

bool activate_until(QWidget& window, const std::function<bool()>& is_so) {
    return do_until({"windowactivate", QString::number(window.winId())}, is_so);
}

void activate(QWidget& window) {
    ASSERT_TRUE(activate_until(window, [&] { return is_active(window); }));
}

QRect on_screen(const QWidget& widget) {
    return {widget.mapToGlobal(QPoint(0, 0)), widget.size()};
}

class Balloons : public test::Dialogs {
protected:
    Balloons() {
        owner_->resize(900, 600);
        EXPECT_TRUE(wait_for([&] { return is_active(*owner_); }));
    }

    Dialog open_dialog(const std::string& parameters) {
        const Dialog dialog = open(SplitField::kind, parameters);
        EXPECT_TRUE(wait_for([&] { return is_active(dialog.window()); }));
        return dialog;
    }
    /// A dialog with a balloon at its separator.
    Dialog refused_dialog() {
        const Dialog dialog = open_dialog("ARTIST\n");
        dialog.press_ok();
        EXPECT_EQ(dialog.message(), "1023: Please enter a separator string.");
        return dialog;
    }
    static const Balloon* balloon(const Dialog& dialog) { return test::shown_balloon(dialog.window()); }
    /// A place of the owner that is free.
    QPoint beside() const { return on_screen(*owner_).bottomRight() - QPoint(20, 20); }
};

TEST_F(Balloons, ClicksGoThrough) {
    const Dialog dialog = refused_dialog();
    dialog.control<QLineEdit>(1023).setText(";");
    // It is another time that the window of the balloon is shown.
    activate(*owner_);
    activate(dialog.window());
    ASSERT_TRUE(wait_for([&] { return balloon(dialog) != nullptr; }));
    const QRect common = on_screen(dialog.control(1)) & balloon(dialog)->geometry();
    ASSERT_GE(std::min(common.width(), common.height()), 4) << "the balloon lies over OK";
    EXPECT_TRUE(click_until(common.center(), [&] { return dialog.is_gone(); }));
    EXPECT_EQ(host_.take_events(), "notified 1");
}

TEST_F(Balloons, ClicksGoThroughTipsThatHaveNoFreePlace) {
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    layout->setSpacing(0);
    auto* box = new QLineEdit;
    layout->addWidget(box);
    auto* button = new QPushButton("Press");
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    layout->addWidget(button);
    window.showMaximized();
    ASSERT_TRUE(wait_for([&] { return is_active(window) && button->height() > 700; }));
    Balloon tip(window, Balloon::Shape::plain);
    tip.show_at(*box, "First track: something");
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tip));
    ASSERT_TRUE(on_screen(*button).contains(tip.geometry().center()));
    int pressed = 0;
    QObject::connect(button, &QPushButton::clicked, &window, [&] { ++pressed; });
    EXPECT_TRUE(click_until(tip.geometry().center(), [&] { return pressed > 0; }));
    EXPECT_TRUE(tip.isVisible());
}

TEST_F(Balloons, AreSeenWithTheirWindowOnly) {
    const Dialog dialog = refused_dialog();
    const auto is_seen = [&] { return balloon(dialog) != nullptr; };
    const auto is_not_seen = [&] { return !is_seen(); };
    EXPECT_TRUE(click_until(beside(), is_not_seen)) << "another window is active";
    EXPECT_TRUE(wait_for([&] { return is_active(*owner_); }));
    EXPECT_TRUE(activate_until(dialog.window(), is_seen));
    xdotool({"windowminimize", QString::number(dialog.window().winId())});
    EXPECT_TRUE(wait_for(is_not_seen)) << "it is minimised";
    EXPECT_TRUE(activate_until(dialog.window(), is_seen));
    xdotool({"windowminimize", QString::number(owner_->winId())});
    EXPECT_TRUE(wait_for(is_not_seen)) << "it is minimised with its owner";
    dialog.press_ok();
    EXPECT_TRUE(is_not_seen()) << "a message that comes meanwhile waits";
    activate(*owner_);
    EXPECT_TRUE(activate_until(dialog.window(), is_seen));
    dialog.press_cancel();
    EXPECT_TRUE(is_not_seen());
}

TEST_F(Balloons, AClickIntoTheDisabledOwnerLeadsToItsDialog) {
    owner_->setEnabled(false);
    const Dialog dialog = open_dialog("ARTIST\n;");
    bool was_left = false;
    QObject::connect(qApp, &QGuiApplication::focusWindowChanged, &dialog.window(),
                     [&](QWindow* window) { was_left |= window == owner_->windowHandle(); });
    ASSERT_TRUE(click_until(beside(), [&] { return was_left; }));
    EXPECT_TRUE(wait_for([&] { return is_active(dialog.window()); }));
    xdotool({"key", "Escape"});
    EXPECT_TRUE(wait_for([&] { return dialog.is_gone(); }));
    EXPECT_EQ(host_.take_events(), "notified 0");
}

} // namespace
} // namespace quorvex
