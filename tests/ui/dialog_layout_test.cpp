// Where controls stand: in dialog units of any font, and while windows grow.

#include "script/action_registry.h"
#include "tests/ui/dialogs_fixture.h"
#include "ui/widgets/anchor_resizer.h"

#include <QLabel>
#include <QSizeGrip>

namespace quorvex {
namespace {

using namespace vantaro;
using test::Dialog;

class DialogLayout : public test::Dialogs {
protected:
    ~DialogLayout() override { QApplication::setFont(font_); }

    /// What does not show all of itself, stands on another control, or leaves the window.
    static std::string faults(const QWidget& window) {
        std::string faults;
        std::vector<const QWidget*> shown;
        for (const QWidget* widget : window.findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
            if (!widget->isWindow() && !dynamic_cast<const QSizeGrip*>(widget))
                shown.push_back(widget);
        for (const QWidget* widget : shown) {
            const std::string name = widget->metaObject()->className() + widget->objectName().toStdString();
            const bool is_box =
                !dynamic_cast<const QLabel*>(widget) && !dynamic_cast<const QAbstractButton*>(widget);
            QSize hint = dynamic_cast<const QPlainTextEdit*>(widget) ? QSize() : widget->sizeHint();
            if (const auto* button = dynamic_cast<const QPushButton*>(widget))
                hint.setWidth(button->fontMetrics().horizontalAdvance(button->text()) + 4);
            if ((!is_box && widget->width() < hint.width()) || widget->height() < hint.height())
                faults += name + " is clipped; ";
            if (!window.rect().contains(widget->geometry()))
                faults += name + " leaves the window; ";
            for (const QWidget* other : shown)
                if (other < widget && other->geometry().intersects(widget->geometry()))
                    faults += name + " stands on another; ";
        }
        return faults;
    }

    const QFont font_ = QApplication::font();
};

TEST_F(DialogLayout, FitsEveryFont) {
    for (const int points : {6, 9, 13, 24}) {
        QFont font = font_;
        font.setPointSize(points);
        QApplication::setFont(font);
        for (const ActionMenuEntry& entry : action_menu()) {
            action_ = Ref<Action>::adopt(entry.type->create(notify_.get()));
            if (!action_->has_settings())
                continue;
            const Dialog dialog = open(*action_);
            EXPECT_EQ(faults(dialog.window()), "") << entry.name << " at " << points;
            dialog.press_cancel();
            run_deleted();
        }
    }
}

TEST_F(DialogLayout, FollowsAFontThatChanges) {
    const Dialog dialog =
        open(find_action_type(guid("{C3DCFE2F-16F4-48B9-B0C4-961470019784}"))->get_guid(), "A\nb");
    const QSize before = dialog.window().size();
    dialog.window().resize(before + QSize(40, 30));
    QFont font = font_;
    font.setPointSize(2 * font_.pointSize());
    QApplication::setFont(font);
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.window().width() > before.width() * 3 / 2; }));
    EXPECT_EQ(faults(dialog.window()), "");
    const QWidget& cancel = dialog.control(2);
    EXPECT_LT(dialog.window().width() - cancel.geometry().right(), cancel.width() / 2)
        << "it has kept its growth";
}

TEST(DialogUnits, ComeFromTheFont) {
    // Four units are the average letter, eight the height, whatever the font.
    for (const int points : {7, 10, 30}) {
        QFont font;
        font.setPointSize(points);
        const QFontMetricsF metrics(font);
        const DialogUnits units(font);
        const QString letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
        EXPECT_NEAR(units.pixels(4 * 52, 8).width(), metrics.horizontalAdvance(letters), 1);
        EXPECT_NEAR(units.pixels(4, 80).height(), 10 * metrics.height(), 1);
        DialogUnits roomy = units;
        roomy.make_room(QSize(units.pixels(100, 1).width() * 3, 0), 100, 10);
        EXPECT_NEAR(roomy.pixels(50, 1).width(), 3 * units.pixels(50, 1).width(), 3);
        EXPECT_EQ(roomy.pixels(1, 80).height(), units.pixels(1, 80).height());
    }
    const DialogUnits units((QFont()));
    EXPECT_EQ(units.pixels({4, 4, 30, 8}).right() + 1, units.pixels({34, 4, 9, 8}).left())
        << "neighbours meet";
}

TEST(AnchorResizerTest, SharesGrowth) {
    static constexpr Control controls[] = {
        edit(11, {4, 4, 50, 12}, control_flag::scrolls), edit(12, {4, 20, 50, 60}, control_flag::multi_line),
        edit(13, {60, 4, 30, 12}, control_flag::scrolls), ok_button(40, 84)};
    static constexpr AnchorRow rows[] = {
        {11, 0, 0, 1, 0}, {12, 0, 0, 1, 1}, {13, 0.5, 0.25, 0.5, 0.25}, {ok_id, 1, 1, 1, 1}};
    static constexpr Resizing resizing{rows, 60, 50, true};
    static constexpr DialogTemplate dialog{1, "", 100, 100, controls, &resizing};
    QWidget window;
    DialogControls made(dialog, window);
    made.place();
    AnchorResizer resizer(window, made, resizing);
    resizer.record();
    window.show();
    std::map<int, QRect> start;
    for (int id : {11, 12, 13, 1})
        start[id] = made.get(static_cast<std::uint16_t>(id)).geometry();
    const QSize size = window.size();
    EXPECT_EQ(window.minimumSize(), made.units().pixels(60, 50));
    const struct {
        QSize growth;
        QMargins moved_13; // right: by how much it moves right; bottom: down
    } steps[] = {{{100, 60}, {0, 0, 50, 15}},
                 {{3, 2}, {0, 0, 2, 1}},
                 {{-3, -2}, {0, 0, -2, -1}},
                 {{1, 1}, {0, 0, 1, 0}},
                 {{0, 0}, {}}};
    for (const auto& [growth, moved] : steps) {
        window.resize(size + growth);
        QCoreApplication::processEvents();
        ASSERT_EQ(window.size(), size + growth);
        EXPECT_EQ(resizer.growth(), growth);
        EXPECT_EQ(made.get(11).geometry(), start[11].adjusted(0, 0, growth.width(), 0));
        EXPECT_EQ(made.get(12).geometry(), start[12].adjusted(0, 0, growth.width(), growth.height()));
        EXPECT_EQ(made.get(13).geometry(), start[13].translated(moved.right(), moved.bottom()));
        EXPECT_EQ(made.get(1).geometry(), start[1].translated(growth.width(), growth.height()));
        EXPECT_EQ(window.findChild<QSizeGrip*>()->geometry().bottomRight(), window.rect().bottomRight());
    }
    EXPECT_TRUE(window.findChild<QSizeGrip*>()->isVisible());
    window.showMaximized();
    QCoreApplication::processEvents();
    EXPECT_FALSE(window.findChild<QSizeGrip*>()->isVisible());
}

TEST_F(DialogLayout, LabelsLeadToTheirBoxes) {
    const Dialog dialog = open(guid("{B194C3FE-DACE-4816-A230-A09921D55674}"), "A\nb\nc\nn");
    std::string labels;
    for (const QLabel* label : dialog.window().findChildren<QLabel*>())
        labels += label->text().toStdString() + label->buddy()->objectName().toStdString() + ' ';
    EXPECT_EQ(labels, "&Field name:1001 &Old value:1002 &New value:1003 ");
    EXPECT_EQ(dialog.control<QCheckBox>(1004).text(), "&Case-sensitive");
    EXPECT_EQ(dialog.control(1003).accessibleName(), "New value");
}

} // namespace
} // namespace quorvex
