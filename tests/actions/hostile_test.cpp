// Settings and tags made to cost time, memory or the process.

#include "actions/fixed_value.h"
#include "actions/format_value.h"
#include "actions/guess_matcher.h"
#include "actions/input_data.h"
#include "actions/remove_values.h"
#include "actions/replace_value.h"
#include "actions/split_field.h"
#include "engine/change_text.h"
#include "entry/tag_commands.h"
#include "tests/actions/kinds_fixture.h"

#include <chrono>

namespace quorvex {
namespace {

using namespace vantaro;
using test::repeat;

/// What takes time in proportion to its input ends well within this, sanitizers and a busy machine included.
constexpr std::chrono::seconds long_enough{20};

class Hostile : public test::Kinds {
protected:
    ~Hostile() override { EXPECT_LT(std::chrono::steady_clock::now() - start_, long_enough); }

    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

TEST_F(Hostile, GuessPatternsThatInviteBacktracking) {
    constexpr std::size_t size = 1'000'000;
    const struct {
        const char* name;
        std::string subject;
        std::string pattern;
        std::size_t length; // of what the last field gets
    } rows[] = {
        {"blanks", repeat(" ", size) + "x", "%a% - %b%", size + 1},
        {"blanks on blanks", repeat(" \t", size / 2) + "x", "%z%" + repeat("\t ", size / 2) + "%a%", 1},
        {"blanks between", repeat("a ", size / 2) + "-", "%a%" + repeat(" a", 1000) + "-%b%", size + 1},
        {"many references", repeat("x ", size / 2) + "y", repeat("%a% ", 400'000) + "%a%", 200'001},
        {"only signs", repeat("x", size), repeat("%", size), 0},
        {"near misses", repeat("a", size), repeat("%a%aaaaaaaab", 10'000), size},
        {"one long near miss", repeat("a", size), "%a%" + repeat("a", size / 2) + "b", size},
        {"near misses with blanks", repeat("a  ", size / 3), "%a%" + repeat("a\t", 100'000) + "b%b%",
         size / 3 * 3 - 2},
    };
    for (const auto& row : rows) {
        TrackInfoRecord info;
        guess_fields(info, row.subject, row.pattern);
        const std::size_t count = info.field_count();
        EXPECT_EQ(count == 0 ? 0 : std::strlen(info.value(count - 1, 0)), row.length) << row.name;
    }
}

TEST_F(Hostile, LargeValues) {
    const std::string large = repeat("0123456789", 1'000'000);
    const struct {
        const char* name;
        Guid kind;
        std::string parameters;
        std::string value;
        std::size_t count;
        std::string_view starts_with;
    } rows[] = {
        {"set", SetValue::kind, "A\n" + large, "x", 1,
         "A = \"01234567890123456789012345678901234567890123456789 (...)\""},
        {"add", AddValue::kind, "A\n" + large, large, 2, "A = \"0123"},
        {"split", SplitField::kind, "A\n9", large, 1'000'000, "A = \"012345678\"; \"012345678\"; "},
        {"split at what is not there", SplitField::kind, "A\n" + large, repeat("0", 10'000'000), 1,
         "No changes"},
        {"split blanks", SplitField::kind, "A\n ,", repeat(" ", 10'000'000) + "x", 1, "A = \"x\""},
        {"split separators", SplitField::kind, "A\n,", repeat(", ", 5'000'000), 1, "No changes"},
        {"replace", ReplaceValue::kind, "A\n" + large + "\nB\nn", large, 1, "A = \"B\""},
        {"remove", RemoveValues::kind, "A\n" + repeat(";", 1'000'000) + "x\nn", "y", 1, "No changes"},
    };
    for (const auto& row : rows) {
        TrackInfoRecord before;
        before.set_field("A", row.value.c_str());
        TrackInfoRecord after(before);
        const Ref<Action> made = action(row.kind, row.parameters);
        made->apply(&track_, after, 0, 1);
        EXPECT_EQ(after.value_count(0), row.count) << row.name;
        EXPECT_TRUE(describe_changes(before, after).starts_with(row.starts_with)) << row.name;
        EXPECT_EQ(parameters(*made), row.parameters) << row.name;
    }
    const Ref<Action> lines = action(InputData::kind, "%a%\n" + repeat("\r\n", 1'000'000) + "x");
    TrackInfoRecord info;
    lines->apply(&track_, info, 1'000'000, 1'000'001);
    EXPECT_EQ(test::tags_text(info), "a=[x]");
}

TEST_F(Hostile, DeepPatterns) {
    for (const char* opening : {"[", "$if(", "$upper(", "(", "$upper((", "'", "$puts(x,["}) {
        for (const char* closing : {"", ")", "]"}) {
            const std::string pattern = repeat(opening, 100'000) + "x" + repeat(closing, 100'000);
            TrackInfoRecord info;
            action(FormatValue::kind, "A\n" + pattern)->apply(&track_, info, 0, 1);
            TrackInfoRecord by_command = test::tags("A=[old]");
            const bool compiled = run_tag_command("FORMAT:A:" + pattern, &track_, by_command, 0);
            const std::string expected = info.field_count() == 0 ? "" : info.value(0, 0);
            EXPECT_EQ(test::tags_text(by_command), compiled ? test::tags_text(info) : "A=[old]") << opening;
            EXPECT_EQ(expected == "<ERROR>", !compiled) << opening << closing;
        }
    }
}

TEST_F(Hostile, BytesThatAreNotUtf8) {
    const std::string bad = "a\xC3 \xFF;\xED\xA0\x80,\xF8%\x80%";
    for (const ActionMenuEntry& entry : action_menu()) {
        const Guid kind = entry.type->get_guid();
        for (const std::string& text : {bad, bad + '\n' + bad, "A\n" + bad, bad + '\n' + bad + "\nn",
                                        "A\n" + bad + "\nn", "A\n" + bad + '\n' + bad + "\nn"}) {
            const Ref<Action> made = instantiate({kind, text}, *notify_);
            if (!made)
                continue;
            if (made->has_settings()) {
                EXPECT_EQ(parameters(*made), text);
            }
            description(*made);
            TrackInfoRecord before =
                test::tags("A=[" + bad + "][x] ARTIST=[" + bad + "] " + bad + "=[" + bad + "]");
            TrackInfoRecord after(before);
            made->apply(&track_, after, 0, 1);
            made->get_group_key(&track_);
            EXPECT_NE(describe_changes(before, after), "") << entry.name;
        }
    }
}

} // namespace
} // namespace quorvex
