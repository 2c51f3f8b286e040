#include "ui/history.h"

#include "tests/component/component_fixture.h"

namespace quorvex {
namespace {

class History : public test::Component {
protected:
    static std::string text(const DropDownHistory& history) {
        std::string text;
        for (const std::string& entry : history.entries())
            text += entry + ' ';
        return text;
    }
    static void fill(const DropDownHistory& history, int count) {
        history.wipe();
        for (int i = count; i > 0; --i)
            history.add(std::to_string(i));
    }
    static std::string numbers(int first, int last) {
        std::string text;
        for (int i = first; i <= last; ++i)
            text += std::to_string(i) + ' ';
        return text;
    }
};

TEST_F(History, PutsTheLatestFirst) {
    EXPECT_EQ(text(field_name_history),
              "ARTIST TITLE ALBUM GENRE TRACKNUMBER COMPOSER DATE COMMENT PERFORMER ");
    EXPECT_FALSE(field_name_history.add("Artist")) << "letter case counts";
    EXPECT_TRUE(field_name_history.add("DATE"));
    EXPECT_FALSE(field_name_history.add("")) << "nothing to add";
    EXPECT_EQ(text(field_name_history),
              "DATE Artist ARTIST TITLE ALBUM GENRE TRACKNUMBER COMPOSER COMMENT PERFORMER ");
    EXPECT_FALSE(guess_pattern_history.add("a\nb\n"));
    EXPECT_TRUE(guess_pattern_history.add("a|b|"));
    EXPECT_FALSE(guess_pattern_history.add("c"));
    EXPECT_EQ(text_setting(setting::guess_pattern_history).get(), "c\na|b|\n");
}

TEST_F(History, HoldsOneMoreThanItsCapacity) {
    const struct {
        DropDownHistory history;
        int capacity;
    } rows[] = {{field_name_history, 32}, {formatting_pattern_history, 10}, {guess_pattern_history, 10}};
    for (const auto& [history, capacity] : rows) {
        fill(history, capacity);
        EXPECT_EQ(text(history), numbers(1, capacity));
        history.add("x");
        EXPECT_EQ(text(history), "x " + numbers(1, capacity)) << "one more";
        EXPECT_TRUE(history.add(std::to_string(capacity))) << "moving trims nothing";
        EXPECT_EQ(text(history), std::to_string(capacity) + " x " + numbers(1, capacity - 1));
        history.add("y");
        EXPECT_EQ(text(history), "y " + std::to_string(capacity) + " x " + numbers(1, capacity - 2));
    }
    // What another version has stored may hold any number.
    std::string stored;
    for (int i = 1; i <= 50; ++i)
        stored += std::to_string(i) + "\n\n";
    text_setting(setting::guess_pattern_history).set(stored);
    EXPECT_EQ(text(guess_pattern_history), numbers(1, 50));
    guess_pattern_history.add("x");
    EXPECT_EQ(text(guess_pattern_history), "x " + numbers(1, 10));
}

TEST_F(History, ForgetsWhatItIsToldTo) {
    EXPECT_FALSE(field_name_history.remove("artist"));
    EXPECT_TRUE(field_name_history.remove("ARTIST"));
    EXPECT_EQ(text(field_name_history), "TITLE ALBUM GENRE TRACKNUMBER COMPOSER DATE COMMENT PERFORMER ");
    field_name_history.wipe();
    EXPECT_EQ(text_setting(setting::field_name_history).get(), "") << "the initial names do not come back";
    EXPECT_FALSE(field_name_history.remove(""));
}

} // namespace
} // namespace quorvex
