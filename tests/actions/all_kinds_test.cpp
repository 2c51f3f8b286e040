// What holds for all built-in kinds, as the component registers them.

#include "actions/parameter_text.h"
#include "actions/setting_table.h"
#include "tests/actions/kinds_fixture.h"

namespace quorvex {
namespace {

using namespace vantaro;

struct Example {
    const char* name; // as menus have it
    const char* parameters;
    /// As people who write scripts name and see them, "name=text|" each.
    const char* settings;
};

constexpr Example examples[] = {
    {"Add value...", "GENRE\na;b", "field=GENRE|value=a;b|"},
    {"Auto track number...", "%album%", "pattern=%album%|"},
    {"Copy values between fields...", "A\nB", "from=A|to=B|"},
    {"Embed cuesheet", "", ""},
    {"Format value from other fields...", "A\n%title% %list_index%", "field=A|pattern=%title% %list_index%|"},
    {"Guess values from file names...", "%a% - %b%\n", "pattern=%a% - %b%\n|"},
    {"Guess values from other fields...", "%c% %d%\n%title%\nx", "pattern=%c% %d%|source=%title%\nx|"},
    {"Input data (one line per track)...", "%title%\nx\r\ny\n", "pattern=%title%|data=x\r\ny\n|"},
    {"Remove all fields", "", ""},
    {"Remove all fields except for...", "artist;genre", "fields=artist;genre|"},
    {"Remove field...", "GENRE", "field=GENRE|"},
    {"Remove values...", "GENRE\na;b\nc", "field=GENRE|values=a;b|case-sensitive=c|"},
    {"Replace value...", "GENRE\na\nb\nn", "field=GENRE|old=a|new=b|case-sensitive=n|"},
    {"Set value...", "GENRE\na\r", "field=GENRE|value=a\r|"},
    {"Split field by separator...", "GENRE\n;\n", "field=GENRE|separator=;\n|"},
    {"Split multiple artist fields", "", ""},
};

class AllKinds : public test::Kinds {
protected:
    /// Texts, tags that it makes and position: what two actions of one kind can differ in.
    std::string behaviour(Action& action) {
        std::string text = to_text(action.get_guid()) + description(action) + '|' + parameters(action);
        for (std::uint32_t index : {0U, 1U}) {
            TrackInfoRecord info = test::tags("TITLE=[t u] GENRE=[A][a][b;c] ARTIST=[x, y] A=[old]");
            action.apply(&track_, info, index, 2);
            text += '|' + test::tags_text(info);
        }
        return text + to_text(action.get_group_key(&track_));
    }
};

TEST_F(AllKinds, ReadBackTheirOwnTexts) {
    const std::vector<ActionMenuEntry> menu = action_menu();
    ASSERT_EQ(menu.size(), std::size(examples));
    std::string without_settings;
    std::vector<Guid> kinds;
    for (std::size_t i = 0; i < menu.size(); ++i) {
        const Example& example = examples[i];
        EXPECT_EQ(menu[i].name, example.name);
        const Guid kind = menu[i].type->get_guid();
        kinds.push_back(kind);
        const Ref<Action> made = action(kind, example.parameters);
        EXPECT_EQ(made->get_guid(), kind) << example.name;
        const Ref<Action> again = action(kind, parameters(*made));
        EXPECT_EQ(behaviour(*again), behaviour(*made)) << example.name;
        without_settings += made->has_settings() ? "" : menu[i].name + "; ";
        EXPECT_EQ(menu[i].name.ends_with("..."), made->has_settings());
        EXPECT_EQ(made->uses_group_key(), made->get_group_key(&track_) != Guid()) << example.name;
        EXPECT_EQ(made->uses_group_key(), menu[i].name == "Auto track number...");

        const Ref<Action> initial = Ref<Action>::adopt(menu[i].type->create(notify_.get()));
        EXPECT_EQ(behaviour(*action(kind, parameters(*initial))), behaviour(*initial)) << example.name;
    }
    EXPECT_EQ(without_settings, "Embed cuesheet; Remove all fields; Split multiple artist fields; ");
    std::ranges::sort(kinds);
    EXPECT_EQ(std::ranges::adjacent_find(kinds), kinds.end());
    EXPECT_EQ(test::references(*notify_), 1U);
}

TEST_F(AllKinds, SettingsHaveNames) {
    for (const ActionMenuEntry& entry : action_menu()) {
        const Example& example =
            *std::ranges::find_if(examples, [&](const Example& row) { return entry.name == row.name; });
        const auto known = settings_of(entry.type->get_guid());
        ASSERT_TRUE(known) << entry.name;
        const std::span<const Setting> settings = known->rows;
        const std::vector<std::string> texts = split_settings(settings, example.parameters);
        std::string text;
        for (std::size_t i = 0; i < texts.size(); ++i)
            text += std::string(settings[i].name) + '=' + texts[i] + '|';
        EXPECT_EQ(text, example.settings);
        EXPECT_EQ(join_settings(texts), example.parameters);
        // The table finds malformed what the kind does.
        for (const char* other :
             {"", "a", "a\nb", "a\nb\nc", "a\nb\nx", "a\nb\nc\nn", "a\nb\nc\nd\nn", "\n\n\n\n"}) {
            if (settings.empty())
                continue;
            const bool is_split = test::failure_of([&] {
                                      EXPECT_EQ(join_settings(split_settings(settings, other)), other);
                                  }).empty();
            EXPECT_EQ(is_split, bool(instantiate({entry.type->get_guid(), other}, *notify_)))
                << entry.name << other;
        }
    }
    EXPECT_FALSE(settings_of(Guid()));
}

} // namespace
} // namespace quorvex
