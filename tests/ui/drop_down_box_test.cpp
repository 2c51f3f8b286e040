// Drop-down boxes with a history: their lists, their menu, completion while typing.

#include "ui/widgets/drop_down_box.h"

#include "tests/component/component_fixture.h"
#include "ui/dialog_template.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

namespace quorvex {
namespace {

class DropDownBoxTest : public test::Component {
protected:
    DropDownBoxTest() {
        field_name_history.wipe();
        for (const char* name : {"GENRE", "title", "Album", "ARTIST SORT", "ARTIST"})
            field_name_history.add(name);
    }

    void show() {
        dialog_.show();
        QApplication::setActiveWindow(&dialog_);
        box_.setFocus();
        QTest::keySequence(&box_, QKeySequence::SelectAll);
    }
    static std::string list(const QComboBox& box) {
        std::string text;
        for (int i = 0; i < box.count(); ++i)
            text += box.itemText(i).toStdString() + ' ';
        return text;
    }
    /// The text with what is selected in brackets.
    std::string edit() const {
        QString text = box_.currentText();
        const QLineEdit& line = *box_.lineEdit();
        if (line.hasSelectedText())
            text.insert(line.selectionEnd(), ']').insert(line.selectionStart(), '[');
        return text.toStdString();
    }
    /// What drops down.
    static std::string suggested() {
        const auto* popup = dynamic_cast<QAbstractItemView*>(QApplication::activePopupWidget());
        std::string text;
        for (int row = 0; popup && row < popup->model()->rowCount(); ++row)
            text += popup->model()->index(row, 0).data().toString().toStdString() + ' ';
        return text;
    }
    void type(const char* keys) {
        QWidget* target = QApplication::activePopupWidget();
        for (; *keys; ++keys) {
            target = QApplication::activePopupWidget();
            QTest::keyClick(target ? target : &box_, *keys);
        }
    }
    void press(Qt::Key key) {
        QWidget* target = QApplication::activePopupWidget();
        QTest::keyClick(target ? target : &box_, key);
    }

    /// Asks for the menu and takes the item of that text; none: leaves the menu. Returns what stood in it.
    std::string choose(const char* chosen, const std::function<void(QMenu&)>& look = {}) {
        std::string items;
        QTimer::singleShot(0, [&] {
            auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_TRUE(menu);
            if (look)
                look(*menu);
            QAction* found = nullptr;
            for (QAction* action : menu->actions()) {
                items += action->text().toStdString() + '|';
                if (action->text() == QLatin1String(chosen))
                    found = action;
            }
            if (found) {
                menu->setActiveAction(found);
                QTest::keyClick(menu, Qt::Key_Return);
            } else {
                QTest::keyClick(menu, Qt::Key_Escape);
            }
        });
        has_changed_ = show_menu(box_, field_name_history, std::nullopt);
        return items;
    }

    QDialog dialog_;
    DropDownBox box_{control_flag::upper_case | control_flag::sorted | control_flag::scrolls, &dialog_};
    bool has_changed_ = false;
};

TEST_F(DropDownBoxTest, ListsTheHistory) {
    attach(box_, field_name_history, "genre\nx");
    EXPECT_EQ(box_.currentText(), "genre\nx") << "unchanged";
    EXPECT_EQ(list(box_), "Album ARTIST ARTIST SORT GENRE genre|x title ");
    DropDownBox unsorted(0, &dialog_);
    attach(unsorted, field_name_history, "");
    EXPECT_EQ(list(unsorted), "genre|x ARTIST ARTIST SORT Album title GENRE ");
    EXPECT_EQ(unsorted.currentText(), "");

    box_.setCurrentIndex(0);
    EXPECT_EQ(box_.currentText(), "Album") << "what is chosen from the list keeps its letters";
}

TEST_F(DropDownBoxTest, KeepsWhatIsTyped) {
    // Also where the list has it in other letters, and when Enter or leaving the box would look it up there.
    attach_with_completion(box_, "");
    show();
    type("ALBUM");
    press(Qt::Key_Return);
    EXPECT_EQ(box_.currentText(), "ALBUM");
    box_.clearFocus();
    EXPECT_EQ(box_.currentText(), "ALBUM");
    EXPECT_EQ(list(box_), "Album ARTIST ARTIST SORT GENRE title ");
}

TEST_F(DropDownBoxTest, WheelIsForTheFocus) {
    attach(box_, field_name_history, "GENRE");
    show();
    const auto turn = [&] {
        QWheelEvent event(QPointF(3, 3), box_.mapToGlobal(QPointF(3, 3)), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&box_, &event);
        return box_.currentText();
    };
    box_.clearFocus();
    EXPECT_EQ(turn(), "GENRE");
    box_.setFocus();
    EXPECT_NE(turn(), "GENRE");
}

TEST_F(DropDownBoxTest, ListStartsAtTheText) {
    for (int i = 0; i < 24; ++i)
        field_name_history.add("FIELD" + std::to_string(10 + i));
    attach(box_, field_name_history, "");
    dialog_.resize(300, 100);
    show();
    const auto current = [&] { return box_.view()->currentIndex().data().toString().toStdString(); };
    box_.setCurrentIndex(0); // chosen before
    for (const char* text : {"FIELD16", "title", "ARTIST"}) {
        box_.setEditText(text);
        box_.showPopup();
        EXPECT_EQ(current(), text);
        EXPECT_TRUE(
            box_.view()->viewport()->rect().contains(box_.view()->visualRect(box_.view()->currentIndex())));
        box_.hidePopup();
        EXPECT_EQ(box_.currentText(), text);
    }
    box_.setEditText("Title");
    box_.showPopup();
    EXPECT_EQ(current(), "") << "in other letters it is not there";
    press(Qt::Key_Escape);
    EXPECT_EQ(box_.currentText(), "Title");
    box_.setEditText("FIELD16");
    press(Qt::Key_Down);
    EXPECT_EQ(box_.currentText(), "FIELD17") << "the keyboard goes on from the text, too";
}

TEST_F(DropDownBoxTest, MenuRemovesEntries) {
    attach(box_, field_name_history, "ARTIST");
    const std::string stored = text_setting(setting::field_name_history).get();
    EXPECT_EQ(choose(""), "Wipe history|Remove this history item|");
    EXPECT_FALSE(has_changed_);
    EXPECT_EQ(text_setting(setting::field_name_history).get(), stored);

    box_.setEditText("NEW");
    guess_pattern_history.add("%x%");
    choose("Remove this history item");
    EXPECT_FALSE(has_changed_) << "it was not there";
    EXPECT_EQ(text_setting(setting::field_name_history).get(), stored);
    EXPECT_EQ(box_.currentText(), "NEW");

    box_.setEditText("title");
    field_name_history.add("LATER");
    choose("Remove this history item");
    EXPECT_TRUE(has_changed_);
    EXPECT_EQ(list(box_), "Album ARTIST ARTIST SORT GENRE LATER ") << "filled again";
    EXPECT_EQ(box_.currentText(), "title");

    choose("Wipe history");
    EXPECT_TRUE(has_changed_);
    EXPECT_EQ(text_setting(setting::field_name_history).get(), "");
    EXPECT_EQ(list(box_), "");
    EXPECT_EQ(box_.currentText(), "title");
    EXPECT_EQ(guess_pattern_history.entries().size(), 1U);

    box_.setEditText("");
    EXPECT_EQ(choose(""), "Wipe history|");
    attach(box_, field_name_history, "A");
    EXPECT_EQ(list(box_), "A ");
}

TEST_F(DropDownBoxTest, MenuOpensWhereItIsAskedFor) {
    attach(box_, field_name_history, "A");
    show();
    QPoint place;
    const auto ask = [&](QContextMenuEvent::Reason reason, QWidget& widget, const QPoint& global) {
        QTimer::singleShot(0, [&] {
            place = QApplication::activePopupWidget()->pos();
            QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
        });
        QContextMenuEvent event(reason, QPoint(2, 2), global);
        QCoreApplication::sendEvent(&widget, &event);
        return place;
    };
    const QPoint clicked = box_.mapToGlobal(QPoint(5, 7));
    EXPECT_EQ(ask(QContextMenuEvent::Mouse, *box_.lineEdit(), clicked), clicked);
    EXPECT_EQ(ask(QContextMenuEvent::Keyboard, box_, QPoint(0, 0)), box_.mapToGlobal(box_.rect().center()));
}

TEST_F(DropDownBoxTest, MenuIsThatOfTheBoxsOwnHistory) {
    guess_pattern_history.add("%x%");
    attach(box_, guess_pattern_history, "%y%");
    show();
    QTimer::singleShot(0, [] {
        auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
        menu->setActiveAction(menu->actions().front());
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QCoreApplication::sendEvent(&box_, &event);
    EXPECT_TRUE(guess_pattern_history.entries().empty());
    EXPECT_EQ(field_name_history.entries().size(), 5U);
}

TEST_F(DropDownBoxTest, MenuOutlivesItsBox) {
    auto* box = new DropDownBox(0, nullptr);
    attach(*box, field_name_history, "A");
    QTimer::singleShot(0, [&] {
        auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
        delete box;
        menu->setActiveAction(menu->actions().front());
        QTest::keyClick(menu, Qt::Key_Return);
    });
    EXPECT_FALSE(show_menu(*box, field_name_history, QPoint(10, 10)));
}

TEST_F(DropDownBoxTest, CompletesWhileTyping) {
    attach_with_completion(box_, "");
    field_name_history.add("ARRANGER"); // too late for this box
    show();
    type("a");
    EXPECT_EQ(edit() + " / " + suggested(), "A[RTIST] / ARTIST ARTIST SORT Album ");
    type("L");
    EXPECT_EQ(edit() + " / " + suggested(), "AL[BUM] / Album ");
    press(Qt::Key_Backspace);
    EXPECT_EQ(edit() + " / " + suggested(), "AL / Album ") << "what was taken away is not put back";
    press(Qt::Key_Backspace);
    EXPECT_EQ(edit() + " / " + suggested(), "A / ARTIST ARTIST SORT Album ");
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(edit(), "ARTIST SORT");
    press(Qt::Key_Return);
    EXPECT_EQ(edit() + " / " + suggested(), "ARTIST SORT / ");
    type("x");
    EXPECT_EQ(edit() + " / " + suggested(), "ARTIST SORTX / ") << "nothing begins so";
    QTest::keySequence(&box_, QKeySequence::SelectAll);
    type("g");
    EXPECT_EQ(edit(), "G[ENRE]");
    press(Qt::Key_Escape);
    EXPECT_EQ(edit() + " / " + suggested(), "G[ENRE] / ");
    EXPECT_TRUE(dialog_.isVisible()) << "Escape was meant for the list";
    press(Qt::Key_Home);
    type("a");
    EXPECT_EQ(edit(), "AGENRE") << "in the middle of a text nothing is appended";

    attach_with_completion(box_, "");
    QTest::keySequence(&box_, QKeySequence::SelectAll);
    type("arr");
    EXPECT_EQ(edit(), "ARR[ANGER]") << "attached again";
}

TEST_F(DropDownBoxTest, EnterAndTabGoPastTheSuggestions) {
    QPushButton ok("OK", &dialog_);
    ok.setDefault(true);
    int pressed = 0;
    QObject::connect(&ok, &QPushButton::clicked, &dialog_, [&] { ++pressed; });
    attach_with_completion(box_, "");
    show();
    type("g");
    EXPECT_NE(suggested(), "");
    press(Qt::Key_Return);
    EXPECT_EQ(pressed, 1);
    EXPECT_EQ(edit() + suggested(), "G[ENRE]");
    QTest::keySequence(&box_, QKeySequence::SelectAll);
    type("t");
    press(Qt::Key_Tab);
    EXPECT_EQ(edit() + suggested(), "TITLE");
    EXPECT_TRUE(ok.hasFocus());
}

} // namespace
} // namespace quorvex
