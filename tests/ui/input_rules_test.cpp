#include "ui/widgets/input_rules.h"

#include "ui/dialog_template.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>

namespace quorvex {
namespace {

/// Puts a text in as pasting does.
template <class Edit>
void paste(Edit& edit, const QString& text) {
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(&edit, &event);
}

TEST(InputRules, OneLineStaysOne) {
    QLineEdit edit;
    rule_input(edit, control_flag::scrolls);
    edit.setText("a\nb");
    EXPECT_EQ(edit.text(), "a\nb") << "what the program puts in";
    edit.clear();
    paste(edit, "\r\n\nx\ny\r\nz\rw\n");
    EXPECT_EQ(edit.text(), "x y z w");
    edit.clear();
    paste(edit, QString("a") + QChar(u'\0') + "b");
    EXPECT_EQ(edit.text(), "ab");
    paste(edit, QString::fromUtf8("\xC3\xA9Z"));
    EXPECT_EQ(edit.text(), QString::fromUtf8("ab\xC3\xA9Z")) << "letters are kept";
}

TEST(InputRules, SmallLettersBecomeCapital) {
    QLineEdit edit;
    rule_input(edit, control_flag::scrolls | control_flag::upper_case);
    edit.setText("Kept");
    EXPECT_EQ(edit.text(), "Kept");
    QTest::keyClicks(&edit, "x");
    EXPECT_EQ(edit.text(), "KEPTX");
    edit.setCursorPosition(1);
    QTest::keyClicks(&edit, "ab");
    EXPECT_EQ(edit.text(), "KABEPTX");
    EXPECT_EQ(edit.cursorPosition(), 3);
    for (int i = 0; i < 8 && edit.text() != "Kept"; ++i)
        edit.undo();
    EXPECT_TRUE(edit.isUndoAvailable() || edit.text() == "Kept") << edit.text().toStdString();
}

TEST(InputRules, TypingStopsAtTheWidthOfTheBox) {
    QLineEdit edit;
    rule_input(edit, 0);
    edit.resize(120, 24);
    edit.show();
    QTest::keyClicks(&edit, QString(200, 'm'));
    const QString full = edit.text();
    EXPECT_GT(full.size(), 3);
    EXPECT_LT(full.size(), 60);
    EXPECT_LE(edit.fontMetrics().horizontalAdvance(full), 120);
    EXPECT_GT(edit.fontMetrics().horizontalAdvance(full + "mm"), 120 - 16) << "and not much before it";

    edit.setCursorPosition(1);
    QTest::keyClicks(&edit, "W");
    EXPECT_EQ(edit.text(), full) << "neither in the middle";
    EXPECT_EQ(edit.cursorPosition(), 1);
    QTest::keyClick(&edit, Qt::Key_Delete);
    QTest::keyClicks(&edit, "i");
    EXPECT_EQ(edit.text().size(), full.size()) << "there is room again";

    // A text that was longer from the start can be shortened, and narrower characters put in their place.
    const QString longer(300, 'm');
    edit.setText(longer);
    EXPECT_EQ(edit.text(), longer);
    QTest::keyClicks(&edit, "x");
    EXPECT_EQ(edit.text(), longer);
    QTest::keyClick(&edit, Qt::Key_Backspace);
    EXPECT_EQ(edit.text().size(), 299);
    edit.clear();
    paste(edit, QString::fromUtf8("\xF0\x9F\x8E\xB5").repeated(100));
    EXPECT_FALSE(edit.text().isEmpty());
    EXPECT_FALSE(edit.text().back().isHighSurrogate()) << "no half of a character is left";
}

TEST(InputRules, LimitCountsLineBreaksTwice) {
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
    edit.moveCursor(QTextCursor::Start);
    edit.textCursor().deleteChar();
    paste(edit, "ABC");
    EXPECT_EQ(edit.toPlainText(), "A234\n7890");
    edit.undo();
    EXPECT_NE(edit.toPlainText(), "A234\n7890") << "what was typed before can be taken back";
}

} // namespace
} // namespace quorvex
