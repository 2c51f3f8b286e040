// Keyboard shortcuts: how they are kept, and the window that assigns them.

#include "host/api/exceptions.h"
#include "tests/support/temporary_folder.h"
#include "tests/windows/window_access.h"
#include "vantaro/windows/shortcuts_window.h"

#include <QKeySequenceEdit>
#include <QLabel>

#include <filesystem>

namespace vantaro::core {
namespace {

constexpr Guid tidy = guid("{11111111-0000-0000-0000-000000000000}");
constexpr Guid rename_id = guid("{22222222-0000-0000-0000-000000000000}");
constexpr Guid absent = guid("{33333333-0000-0000-0000-000000000000}");

class Shortcuts : public testing::Test {
protected:
    Shortcuts() { load(); }
    void load() {
        table.load(folder.path(), [this](const std::string& line) { reports.push_back(line); });
    }
    /// How many files of broken content were kept.
    std::ptrdiff_t kept_files() const {
        return std::ranges::count_if(
            std::filesystem::directory_iterator(folder.path()), [](const auto& entry) {
                return entry.path().string().find("shortcuts.json.broken-") != std::string::npos;
            });
    }

    test::TemporaryFolder folder;
    ShortcutTable table;
    std::vector<std::string> reports;
};

TEST_F(Shortcuts, AreStored) {
    EXPECT_TRUE(table.shortcut(tidy).isEmpty());
    table.set(tidy, QKeySequence("Ctrl+Shift+T"));
    table.set(rename_id, QKeySequence("Ctrl+K, Ctrl+R"));
    table.set(absent, QKeySequence("F5"));
    table.set(absent, {});
    table.save();
    table.set(tidy, {});
    load();
    EXPECT_EQ(table.shortcut(tidy), QKeySequence("Ctrl+Shift+T"));
    EXPECT_EQ(table.shortcut(rename_id), QKeySequence("Ctrl+K, Ctrl+R"));
    EXPECT_TRUE(table.shortcut(absent).isEmpty());
    EXPECT_EQ(table.all().size(), 2U);
    EXPECT_EQ(reports, std::vector<std::string>());
    EXPECT_EQ(kept_files(), 0);
}

TEST_F(Shortcuts, WhatMakesNoSenseIsReportedAndNotLost) {
    struct Row {
        const char* text;
        std::size_t commands;
        std::size_t reports;
    };
    const Row rows[] = {
        {"no JSON", 0, 1},
        {"[1]", 0, 1},
        {R"({"{11111111-0000-0000-0000-000000000000}": "F2", "who": "F3"})", 1, 1},
        {R"({"{11111111-0000-0000-0000-000000000000}": "Hyperspace+Q", )"
         R"("{22222222-0000-0000-0000-000000000000}": 7, "{33333333-0000-0000-0000-000000000000}": ""})",
         0, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        reports.clear();
        folder.write("shortcuts.json", row.text);
        load();
        EXPECT_EQ(table.all().size(), row.commands);
        EXPECT_EQ(reports.size(), row.reports);
        EXPECT_EQ(folder.read("shortcuts.json"), row.text);
        const auto kept_before = kept_files();
        table.save();
        EXPECT_EQ(kept_files(), kept_before + 1);
    }
}

TEST_F(Shortcuts, AFolderThatMayNotBeWrittenLeavesTheFile) {
    folder.write("shortcuts.json", "{}");
    folder.set_mode("shortcuts.json", 0644);
    folder.set_mode("", 0555);
    table.set(tidy, QKeySequence("F2"));
    {
        const test::OrdinaryUser user;
        EXPECT_THROW(table.save(), vantaro_io::exception_io_denied);
    }
    folder.set_mode("", 0755);
    EXPECT_EQ(folder.read("shortcuts.json"), "{}");
}

class ShortcutsWindow : public Shortcuts {
protected:
    bool edit(const std::function<void(QWidget&)>& act) {
        test::with_modal(act);
        return edit_shortcuts(table, commands, own, nullptr);
    }
    static void choose(const QWidget& window, const QString& path) {
        auto& list = test::child<QTreeWidget>(window);
        list.setCurrentItem(test::find_line(list, path));
    }
    static void type(const QWidget& window, const char* keys) {
        test::child<QKeySequenceEdit>(window).setKeySequence(QKeySequence(keys));
    }
    static bool says(const QWidget& window, const QString& text) {
        return std::ranges::any_of(window.findChildren<QLabel*>(),
                                   [&](const QLabel* label) { return label->text().contains(text); });
    }

    const std::vector<MenuCommand> commands{{{"Tagging"}, "Tidy up", "", tidy, nullptr},
                                            {{"Tagging"}, "Rename", "", rename_id, nullptr},
                                            {{"Tagging"}, "Without a GUID", "", {}, nullptr}};
    const std::vector<WindowKeys> own{{"Select all", QKeySequence("Ctrl+A")}};
};

TEST_F(ShortcutsWindow, AssignsAndClears) {
    table.set(rename_id, QKeySequence("F2"));
    EXPECT_TRUE(edit([](QWidget& window) {
        const auto& list = test::child<QTreeWidget>(window);
        EXPECT_EQ(test::tree_text(list), "Tagging/Tidy up\nTagging/Rename = F2\n");
        auto& keys = test::child<QKeySequenceEdit>(window);
        QTest::keyClick(&keys, Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
        ASSERT_TRUE(QTest::qWaitFor([&] { return test::button(window, "Assign").isEnabled(); }));
        test::press(window, "Assign");
        choose(window, "Tagging/Rename");
        test::press(window, "Clear");
        EXPECT_EQ(test::tree_text(list), "Tagging/Tidy up = Ctrl+Shift+T\nTagging/Rename\n");
        test::press(window, "OK");
    }));
    EXPECT_EQ(table.shortcut(tidy), QKeySequence("Ctrl+Shift+T"));
    EXPECT_TRUE(table.shortcut(rename_id).isEmpty());
}

TEST_F(ShortcutsWindow, TakesKeysOver) {
    table.set(rename_id, QKeySequence("Ctrl+K, Ctrl+R"));
    table.set(absent, QKeySequence("F9"));
    EXPECT_TRUE(edit([](QWidget& window) {
        choose(window, "Tagging/Tidy up");
        type(window, "F9");
        EXPECT_TRUE(says(window, "F9 belongs to a command that is not there"));
        type(window, "F8");
        EXPECT_FALSE(says(window, "belongs to"));
        type(window, "Ctrl+K"); // the longer sequence could not be typed any more
        EXPECT_TRUE(says(window, "Ctrl+K, Ctrl+R belongs to \"Tagging/Rename\""));
        type(window, "Ctrl+A, B");
        EXPECT_TRUE(says(window, "Ctrl+A belongs to \"Select all\" of the window"));
        type(window, "Ctrl+K");
        test::press(window, "OK"); // not without the person saying so
        EXPECT_TRUE(window.isVisible());
        test::press(window, "Take over");
        EXPECT_EQ(test::tree_text(test::child<QTreeWidget>(window)),
                  "Tagging/Tidy up = Ctrl+K\nTagging/Rename\n");
        test::press(window, "OK");
    }));
    EXPECT_EQ(table.shortcut(tidy), QKeySequence("Ctrl+K"));
    EXPECT_TRUE(table.shortcut(rename_id).isEmpty());
    EXPECT_EQ(table.shortcut(absent), QKeySequence("F9"));
}

TEST_F(ShortcutsWindow, CancelChangesNothingAndOkTakesWhatWasTyped) {
    EXPECT_FALSE(edit([](QWidget& window) {
        type(window, "F4");
        test::press(window, "Assign");
        test::press(window, "Cancel");
    }));
    EXPECT_TRUE(table.all().empty());
    EXPECT_TRUE(edit([](QWidget& window) {
        type(window, "F4");
        test::press(window, "OK");
    }));
    EXPECT_EQ(table.shortcut(tidy), QKeySequence("F4"));
}

TEST_F(ShortcutsWindow, SearchesCommandsAndKeys) {
    table.set(rename_id, QKeySequence("Ctrl+R"));
    edit([](QWidget& window) {
        const auto& list = test::child<QTreeWidget>(window);
        auto& search = test::child<QLineEdit>(window);
        ASSERT_EQ(search.placeholderText(), "Search commands and keys");
        search.setText("tidy");
        EXPECT_EQ(test::tree_text(list), "Tagging/Tidy up\n");
        search.setText("ctrl+r");
        EXPECT_EQ(test::tree_text(list), "Tagging/Rename = Ctrl+R\n");
        EXPECT_FALSE(test::child<QKeySequenceEdit>(window).isEnabled()); // its command is out of sight
        window.close();
    });
}

} // namespace
} // namespace vantaro::core
