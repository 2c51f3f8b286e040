// What boxes make of what a person types, pastes and drops, in boxes of one line and of several.

#include "ui/dialog_template.h"
#include "ui/widgets/input_limit.h"
#include "ui/widgets/line_edit.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QTest>

namespace quorvex {
namespace {

void compose(QWidget& edit, const QString& text) {
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(&edit, &event);
}

void paste_by_key(QWidget& edit, const QString& text) {
    QApplication::clipboard()->setText(text);
    QTest::keySequence(&edit, QKeySequence::Paste);
}

void paste_by_menu(QWidget& edit, const QString& text) {
    QApplication::clipboard()->setText(text);
    QContextMenuEvent asked(QContextMenuEvent::Mouse, QPoint(3, 3), edit.mapToGlobal(QPoint(3, 3)));
    QCoreApplication::sendEvent(&edit, &asked);
    auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    for (QAction* action : menu->actions())
        if (action->text().startsWith("&Paste"))
            action->trigger();
    menu->close();
}

void drop(QWidget& edit, const QString& text) {
    QMimeData data;
    data.setText(text);
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&edit, &enter);
    QDropEvent event(QPointF(1000, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&edit, &event);
}

const std::function<void(QWidget&, const QString&)> ways_in[] = {compose, paste_by_key, paste_by_menu, drop};

class OneLine : public testing::Test {
protected:
    LineEdit& make(unsigned flags) {
        edit_ = std::make_unique<LineEdit>(flags, nullptr);
        edit_->resize(120, 24);
        edit_->show();
        QApplication::setActiveWindow(edit_.get());
        return *edit_;
    }
    std::unique_ptr<LineEdit> edit_;
};

TEST_F(OneLine, StaysOne) {
    const std::pair<QString, const char*> rows[] = {
        {"\r\n\nx\ny\r\nz\rw\n", "x y z w"}, {QString("a") + QChar(u'\0') + "b", "ab"}, {"\n\r", ""}};
    for (const auto& come_in : ways_in) {
        for (const auto& [text, wanted] : rows) {
            LineEdit& edit = make(control_flag::scrolls);
            come_in(edit, text);
            EXPECT_EQ(edit.text(), wanted);
        }
    }
    LineEdit& edit = make(control_flag::scrolls);
    edit.setText("a\nb");
    QTest::keyClicks(&edit, "c");
    EXPECT_EQ(edit.text(), "a\nbc") << "what the program puts in stays, also beside what is typed";
    edit.setCursorPosition(1);
    paste_by_key(edit, "x\r\ny");
    EXPECT_EQ(edit.text(), "ax y\nbc");
    EXPECT_EQ(edit.cursorPosition(), 4);
    edit.setText(QString(40000, 'x'));
    QTest::keyClick(&edit, Qt::Key_Backspace);
    EXPECT_EQ(edit.text().size(), 39999) << "long texts are not cut";
}

TEST_F(OneLine, SmallLettersBecomeCapital) {
    for (const auto& come_in : ways_in) {
        LineEdit& edit = make(control_flag::scrolls | control_flag::upper_case);
        edit.setText("Kept");
        come_in(edit, QString::fromUtf8("ab\xC3\x9F"));
        EXPECT_EQ(edit.text(), "KeptABSS");
        edit.undo();
        EXPECT_EQ(edit.text(), "Kept");
        edit.redo();
        EXPECT_EQ(edit.text(), "KeptABSS");
    }
    LineEdit& edit = make(control_flag::scrolls | control_flag::upper_case);
    QTest::keyClicks(&edit, "abc");
    edit.setCursorPosition(1);
    QTest::keyClicks(&edit, "x");
    EXPECT_EQ(edit.text(), "AXBC");
    EXPECT_EQ(edit.cursorPosition(), 2);
    for (int i = 0; i < 12 && edit.isUndoAvailable(); ++i)
        QTest::keySequence(&edit, QKeySequence::Undo);
    EXPECT_EQ(edit.text(), "");
}

TEST_F(OneLine, TypingStopsAtTheWidthOfTheBox) {
    LineEdit& edit = make(0);
    QTest::keyClicks(&edit, QString(200, 'm'));
    const QString full = edit.text();
    EXPECT_GT(full.size(), 3);
    EXPECT_LE(edit.fontMetrics().horizontalAdvance(full), 120);
    EXPECT_GT(edit.fontMetrics().horizontalAdvance(full + "mm"), 120 - 16) << "and not much before it";

    edit.setCursorPosition(1);
    QTest::keyClicks(&edit, "W");
    EXPECT_EQ(edit.text(), full) << "neither in the middle";
    EXPECT_EQ(edit.cursorPosition(), 1);
    QTest::keyClick(&edit, Qt::Key_Delete);
    QTest::keyClicks(&edit, "i");
    EXPECT_EQ(edit.text().size(), full.size()) << "there is room again";
    edit.selectAll();
    QTest::keyClicks(&edit, "x");
    EXPECT_EQ(edit.text(), "x") << "what is selected makes room";
    while (edit.isUndoAvailable())
        edit.undo();
    EXPECT_EQ(edit.text(), "") << "what was refused leaves nothing to undo";

    // A wide letter that is refused takes what follows with it, so that no letter is missing in the middle.
    edit.clear();
    QTest::keyClicks(&edit, QString(full.size() - 1, 'm'));
    while (edit.fontMetrics().horizontalAdvance(edit.text() + 'i')
           < edit.fontMetrics().horizontalAdvance(full))
        QTest::keyClicks(&edit, "i");
    const QString begun = edit.text();
    QTest::keyClicks(&edit, "Will");
    EXPECT_EQ(edit.text(), begun);
    compose(edit, "i");
    paste_by_key(edit, "i");
    EXPECT_EQ(edit.text(), begun) << "in no way";
    QTest::keyClick(&edit, Qt::Key_Backspace);
    QTest::keyClick(&edit, Qt::Key_Backspace);
    QTest::keyClicks(&edit, "i");
    EXPECT_EQ(edit.text(), begun.chopped(2) + 'i');
    paste_by_key(edit, QString(50, 'm') + 'W');
    const QString cut = edit.text();
    QTest::keyClicks(&edit, "i");
    EXPECT_EQ(edit.text(), cut) << "nothing comes behind a text that was cut";
    edit.setText("x");
    QTest::keyClicks(&edit, "i");
    EXPECT_EQ(edit.text(), "xi");

    // A text that was longer from the start can be shortened.
    const QString longer(300, 'm');
    edit.setText(longer);
    QTest::keyClicks(&edit, "x");
    EXPECT_EQ(edit.text(), longer);
    QTest::keyClick(&edit, Qt::Key_Backspace);
    EXPECT_EQ(edit.text().size(), 299);
    for (const auto& come_in : ways_in) {
        edit.clear();
        come_in(edit, QString::fromUtf8("\xF0\x9F\x8E\xB5").repeated(100));
        EXPECT_FALSE(edit.text().isEmpty());
        EXPECT_FALSE(edit.text().back().isHighSurrogate()) << "no half of a character is left";
    }
}

TEST(SeveralLines, LimitCountsLineBreaksTwice) {
    QPlainTextEdit edit;
    limit_input(edit, 10);
    edit.show();
    QApplication::setActiveWindow(&edit);
    edit.setFocus();
    edit.setPlainText("longer than ten");
    EXPECT_EQ(edit.toPlainText(), "longer than ten") << "what the program puts in";
    QTest::keyClicks(&edit, "x");
    EXPECT_EQ(edit.toPlainText(), "longer than ten");
    QTest::keySequence(&edit, QKeySequence::SelectAll);
    QTest::keyClicks(&edit, "1234");
    QTest::keyClick(&edit, Qt::Key_Return);
    QTest::keyClicks(&edit, "7890abc");
    EXPECT_EQ(edit.toPlainText(), "1234\n7890");
    for (const auto& come_in : {compose, paste_by_key}) {
        edit.setPlainText("234\n7890");
        edit.moveCursor(QTextCursor::Start);
        come_in(edit, "ABC");
        EXPECT_EQ(edit.toPlainText(), "A234\n7890");
        edit.undo();
        EXPECT_EQ(edit.toPlainText(), "234\n7890");
    }
    edit.setPlainText("far longer than ten");
    QTest::keySequence(&edit, QKeySequence::SelectAll);
    QTest::keyClick(&edit, Qt::Key_Delete);
    edit.undo();
    EXPECT_EQ(edit.toPlainText(), "far longer than ten") << "what comes back was there before";
}

} // namespace
} // namespace quorvex
