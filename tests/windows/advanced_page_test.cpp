// The tree of the advanced preferences: its shape, editing in place, resetting, searching.

#include "tests/windows/fake_preferences.h"
#include "tests/windows/window_access.h"
#include "vantaro/windows/advanced_page.h"

#include <QMenu>

#include <gmock/gmock.h>

namespace vantaro::core {
namespace {

using test::FakeBranch;
using test::FakeNumber;
using test::FakeText;

constexpr Guid branch_id = guid("{A0000000-0000-0000-0000-000000000000}");
constexpr Guid second_id = guid("{B0000000-0000-0000-0000-000000000000}");
constexpr Guid third_id = guid("{C0000000-0000-0000-0000-000000000000}");
constexpr Guid nobody = guid("{D0000000-0000-0000-0000-000000000000}");

constexpr Guid entry_id(unsigned char number) {
    return {{number}};
}

class AdvancedPageTest : public testing::Test {
protected:
    AdvancedPage& open() {
        const std::vector<Ref<AdvancedPreference>> services{
            Ref<AdvancedPreference>(&number), Ref<AdvancedPreference>(&text), Ref<AdvancedPreference>(&stray),
            Ref<AdvancedPreference>(&branch)};
        page = std::make_unique<AdvancedPage>(services, nullptr);
        page->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(page.get()));
        return *page;
    }
    QTreeWidget& tree() { return test::child<QTreeWidget>(*page); }
    std::string shown() { return test::tree_text(tree()); }
    QLineEdit* editor() { return tree().viewport()->findChild<QLineEdit*>(); }
    /// Types over a value, as a person does who starts with F2.
    void type(const char* name, const char* typed) {
        tree().setCurrentItem(test::find_line(tree(), name));
        tree().setFocus();
        QTest::keyClick(&tree(), Qt::Key_F2);
        ASSERT_NE(editor(), nullptr);
        editor()->selectAll();
        QTest::keyClicks(editor(), typed);
    }
    void type_and_enter(const char* name, const char* typed) {
        type(name, typed);
        QTest::keyClick(editor(), Qt::Key_Return);
        ASSERT_TRUE(QTest::qWaitFor([&] { return editor() == nullptr; }));
    }
    bool is_applied() {
        try {
            page->apply();
            return true;
        } catch (const std::runtime_error& error) {
            problem = error.what();
            return false;
        }
    }

    FakeBranch branch{{"Branch", branch_id, advanced_preferences_root, 2}};
    FakeNumber number{{"Number", entry_id(1), branch_id}};
    FakeText text{{"Text", entry_id(2), branch_id, -1}};
    FakeText stray{{"Stray", entry_id(3), nobody, 1}};
    std::unique_ptr<AdvancedPage> page;
    std::string problem;
};

TEST_F(AdvancedPageTest, StandsInOrderUnderTools) {
    open();
    EXPECT_EQ(shown(), "Tools\n  Stray = unset\n  Branch\n    Text = unset\n    Number = 50\n");
}

TEST_F(AdvancedPageTest, ACircleOfBranchesIsBroken) {
    FakeBranch first{{"First", branch_id, second_id}};
    FakeBranch second{{"Second", second_id, branch_id}};
    FakeBranch own{{"Own parent", third_id, third_id}};
    FakeBranch twice{{"First once more", branch_id, third_id}};
    FakeBranch root{{"Somebody else's root", advanced_preferences_root, nobody}};
    FakeText below_entry{{"Below an entry", entry_id(4), entry_id(1)}};
    const std::vector<Ref<AdvancedPreference>> services{
        Ref<AdvancedPreference>(&first),      Ref<AdvancedPreference>(&second),
        Ref<AdvancedPreference>(&own),        Ref<AdvancedPreference>(&twice),
        Ref<AdvancedPreference>(&root),       Ref<AdvancedPreference>(&number),
        Ref<AdvancedPreference>(&below_entry)};
    page = std::make_unique<AdvancedPage>(services, nullptr);
    EXPECT_EQ(shown(),
              "Tools\n  Below an entry = unset\n  First\n    Number = 50\n    Second\n  Own parent\n");
    page.reset(); // before what it shows
}

TEST_F(AdvancedPageTest, ValuesTakeEffectWhenApplied) {
    open();
    type_and_enter("Number", "700");
    type_and_enter("Text", "  some text ");
    EXPECT_EQ(shown(), "Tools\n  Stray = unset\n  Branch\n    Text =   some text \n    Number = 700\n");
    EXPECT_EQ(number.value, 50);
    EXPECT_EQ(text.value, "unset");
    EXPECT_TRUE(is_applied());
    EXPECT_EQ(number.value, 100);
    EXPECT_EQ(text.value, "  some text ");
    EXPECT_EQ(shown(), "Tools\n  Stray = unset\n  Branch\n    Text =   some text \n    Number = 100\n");
    // Nothing is waiting any more.
    number.value = 7;
    EXPECT_TRUE(is_applied());
    EXPECT_EQ(number.value, 7);
}

TEST_F(AdvancedPageTest, TakesWhatIsStillBeingTyped) {
    open();
    type("Number", "12");
    EXPECT_TRUE(is_applied());
    EXPECT_EQ(number.value, 12);
}

TEST_F(AdvancedPageTest, WholeNumbersTakeNothingElse) {
    open();
    for (const std::string wrong : {"-5", "1x", "12 3", "18446744073709551616", "1.5", "+5"}) {
        type_and_enter("Number", wrong.c_str());
        EXPECT_FALSE(is_applied()) << wrong;
        const std::string mistake = '"' + wrong + "\" is no whole number from 0 to 18446744073709551615";
        EXPECT_EQ(problem, "Number: " + mistake);
        EXPECT_EQ(test::find_line(tree(), "Number")->toolTip(1).toStdString(), mistake);
        EXPECT_EQ(number.taken, "") << wrong;
        EXPECT_THAT(shown(), testing::HasSubstr("Number = " + wrong + '\n'));
    }
    for (const std::string right : {"18446744073709551615", "0", "007"}) {
        type_and_enter("Number", right.c_str());
        EXPECT_TRUE(is_applied()) << right;
        EXPECT_EQ(number.taken, right);
    }
}

TEST_F(AdvancedPageTest, EscapeAndBranchesEditNothing) {
    open();
    type("Text", "other");
    QTest::keyClick(editor(), Qt::Key_Escape);
    ASSERT_TRUE(QTest::qWaitFor([&] { return editor() == nullptr; }));
    tree().setCurrentItem(test::find_line(tree(), "Branch"));
    QTest::keyClick(&tree(), Qt::Key_F2);
    EXPECT_EQ(editor(), nullptr);
    EXPECT_TRUE(is_applied());
    EXPECT_EQ(text.value, "unset");
}

TEST_F(AdvancedPageTest, OneRefusedValueStaysTypedAndTheOthersApply) {
    open();
    type_and_enter("Stray", "forbidden");
    type_and_enter("Number", "3");
    EXPECT_FALSE(is_applied());
    EXPECT_EQ(problem, "Stray: not this one");
    EXPECT_EQ(number.value, 3);
    EXPECT_EQ(shown(), "Tools\n  Stray = forbidden\n  Branch\n    Text = unset\n    Number = 3\n");
}

TEST_F(AdvancedPageTest, ResetsOneEntryByItsMenuOrAll) {
    number.value = 1;
    text.value = "a";
    stray.value = "b";
    open();
    const QRect place = tree().visualItemRect(test::find_line(tree(), "Number"));
    emit tree().customContextMenuRequested(place.center());
    auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    QTest::keyClick(menu, Qt::Key_R);
    EXPECT_EQ(shown(), "Tools\n  Stray = b\n  Branch\n    Text = a\n    Number = (default)\n");
    EXPECT_EQ(number.value, 1);
    EXPECT_TRUE(is_applied());
    EXPECT_EQ(number.value, 50);
    EXPECT_EQ(text.value, "a");

    page->reset_all();
    type_and_enter("Stray", "typed after it");
    EXPECT_TRUE(is_applied());
    EXPECT_EQ(text.value, "unset");
    EXPECT_EQ(stray.value, "typed after it");
}

TEST_F(AdvancedPageTest, Searches) {
    struct Row {
        const char* typed;
        const char* shown;
    };
    const Row rows[] = {
        {"NUMB", "Tools\n  Branch\n    Number = 50\n"},
        {"branch", "Tools\n  Branch\n    Text = unset\n    Number = 50\n"},
        {"50", "Tools\n  Branch\n    Number = 50\n"},
        {"nowhere", ""},
        {"", "Tools\n  Stray = unset\n  Branch\n    Text = unset\n    Number = 50\n"},
    };
    open();
    for (const Row& row : rows) {
        page->findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly)->setText(row.typed);
        EXPECT_EQ(shown(), row.shown) << row.typed;
    }
}

} // namespace
} // namespace vantaro::core
