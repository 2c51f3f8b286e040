// The preferences: the window as a whole, and the file.

#include "host/api/exceptions.h"
#include "tests/support/temporary_folder.h"
#include "tests/windows/fake_preferences.h"
#include "tests/windows/window_access.h"
#include "vantaro/application/preferences.h"
#include "vantaro/terminal/question.h"
#include "vantaro/windows/preferences_window.h"

#include <QCheckBox>
#include <QMessageBox>
#include <QSpinBox>
#include <QTabWidget>

#include <filesystem>

namespace vantaro::core {
namespace {

class PreferencesTest : public testing::Test {
protected:
    PreferencesTest() {
        setup.config_dir = folder.make_folder("settings");
        setup.state_dir = folder.make_folder("state");
        setup.component_dir = folder.make_folder("components");
        setup.interrupt = &interrupt;
        setup.console = &console;
        setup.message = &message;
        setup.question = &question;
        host = std::make_unique<Host>(setup);
        host->services().add_own<AdvancedPreference>(number);
    }
    void show(const std::function<void(QWidget&)>& act) {
        test::with_modal(act);
        show_preferences(*host, setup.config_dir, nullptr);
    }
    /// Each in the order of the page.
    static QSpinBox& days(const QWidget& window) { return test::child<QSpinBox>(window, 0); }
    static QSpinBox& megabytes(const QWidget& window) { return test::child<QSpinBox>(window, 1); }
    static QCheckBox& keep_times(const QWidget& window) { return test::child<QCheckBox>(window); }
    std::string file() const { return folder.read("settings/preferences.json"); }
    Preferences load() const {
        return load_preferences(setup.config_dir, [](const std::string& line) { ADD_FAILURE() << line; });
    }

    test::TemporaryFolder folder;
    Interrupt interrupt;
    Terminal terminal;
    TerminalConsole console{terminal};
    TerminalMessage message;
    TerminalQuestion question{terminal, false, interrupt.flag()};
    HostSetup setup;
    std::unique_ptr<Host> host;
    test::FakeNumber number{{"Number", guid("{A0000000-0000-0000-0000-000000000000}")}};
};

TEST_F(PreferencesTest, SavingKeepsWhatElseTheFileSays) {
    const std::string path = folder.write(
        "settings/preferences.json", R"({"zebra": [1, {"a": null}], "undo_days": 3, "mood": "gut \u00fc"})");
    save_preferences(setup.config_dir, {{7, 8}, true, {Id3v2Policy::keep, "; "}});
    EXPECT_EQ(file(),
              "{\n    \"zebra\": [\n        1,\n        {\n            \"a\": null\n        }\n    ],\n"
              "    \"undo_days\": 7,\n    \"mood\": \"gut \xC3\xBC\",\n    \"undo_bytes\": 8,\n"
              "    \"keep_times\": true,\n    \"id3v2\": \"keep\",\n"
              "    \"id3v2_separator\": \"; \"\n}\n");
    EXPECT_EQ(load().tags, (TagOptions{Id3v2Policy::keep, "; "}));
    EXPECT_EQ(load().undo.days, 7);
    EXPECT_EQ(load().undo.bytes, 8U);
    EXPECT_TRUE(load().keep_times);

    folder.write("settings/preferences.json", "{broken");
    save_preferences(setup.config_dir, {});
    EXPECT_EQ(load().undo.days, 30);
    std::string kept;
    for (const auto& entry : std::filesystem::directory_iterator(setup.config_dir))
        if (entry.path().string().starts_with(path + ".broken-"))
            kept += folder.read("settings/" + entry.path().filename().string());
    EXPECT_EQ(kept, "{broken");
}

TEST_F(PreferencesTest, OkStoresAndPutsIntoEffect) {
    show([&](QWidget& window) {
        EXPECT_EQ(days(window).value(), 30);
        EXPECT_EQ(megabytes(window).value(), 1000);
        days(window).setValue(5);
        megabytes(window).setValue(20);
        keep_times(window).setChecked(true);
        EXPECT_EQ(file(), "");
        test::press(window, "Apply");
        EXPECT_TRUE(window.isVisible());
        EXPECT_EQ(load().undo.days, 5);
        days(window).setValue(6);
        test::press(window, "OK");
    });
    EXPECT_EQ(load().undo.days, 6);
    EXPECT_EQ(load().undo.bytes, 20'000'000U);
    EXPECT_TRUE(load().keep_times);
}

TEST_F(PreferencesTest, WhatIsNotChangedIsNotStored) {
    const std::string text = R"({"undo_bytes": 1234567, "undo_days": "many"})";
    folder.write("settings/preferences.json", text);
    show([](QWidget& window) { test::press(window, "OK"); });
    EXPECT_EQ(file(), text);
    folder.write("settings/preferences.json", R"({"undo_bytes": 1234567})");
    show([](QWidget& window) {
        EXPECT_EQ(megabytes(window).value(), 2);
        days(window).setValue(4);
        test::press(window, "Cancel");
    });
    EXPECT_EQ(load().undo.days, 30);
    show([](QWidget& window) {
        days(window).setValue(4);
        test::press(window, "OK");
    });
    EXPECT_EQ(load().undo.days, 4);
    EXPECT_EQ(load().undo.bytes, 1'234'567U);
}

TEST_F(PreferencesTest, CancelDropsAdvancedValuesAndResetIsForThePage) {
    number.value = 1;
    for (const bool is_accepted : {false, true}) {
        show([&](QWidget& window) {
            days(window).setValue(4);
            auto& tabs = test::child<QTabWidget>(window);
            tabs.setCurrentIndex(1);
            test::press(window, "Reset page");
            EXPECT_EQ(days(window).value(), 4);
            EXPECT_EQ(number.value, 1);
            tabs.setCurrentIndex(0);
            test::press(window, "Reset page");
            EXPECT_EQ(days(window).value(), 30);
            test::press(window, is_accepted ? "OK" : "Cancel");
        });
        EXPECT_EQ(number.value, is_accepted ? 50 : 1);
    }
}

TEST_F(PreferencesTest, WhatCannotBeStoredIsSaidAndStays) {
    folder.set_mode("", 0755);
    folder.set_mode("settings", 0555);
    auto user = std::make_unique<test::OrdinaryUser>();
    show([&](QWidget& window) {
        days(window).setValue(4);
        test::press(window, "OK");
        auto* refusal = dynamic_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(refusal, nullptr);
        EXPECT_TRUE(refusal->text().contains("preferences.json")) << refusal->text().toStdString();
        test::press(*refusal, "OK");
        EXPECT_TRUE(window.isVisible());
        EXPECT_EQ(days(window).value(), 4);
        window.close();
    });
    user.reset();
    folder.set_mode("settings", 0755);
    EXPECT_EQ(file(), "");
}

TEST_F(PreferencesTest, TheParentMayGoMeanwhile) {
    auto parent = std::make_unique<QWidget>();
    test::with_modal([&](QWidget&) { parent.reset(); });
    show_preferences(*host, setup.config_dir, parent.get());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

} // namespace
} // namespace vantaro::core
