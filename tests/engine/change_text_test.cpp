#include "engine/change_text.h"

#include "tests/support/short_forms.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace quorvex {
namespace {

using vantaro::TrackInfoRecord;
using vantaro::test::repeat;
using vantaro::test::tags;

TEST(ChangeText, NamesChangedFieldsInOrder) {
    const struct {
        const char* name;
        std::string before;
        std::string after;
        std::string text;
    } rows[] = {
        {"nothing at all", "", "", "No changes"},
        {"equal", "A=[x][y] B=[]", "A=[x][y] B=[]", "No changes"},
        {"fields in another order", "A=[x] B=[y]", "B=[y] A=[x]", "No changes"},
        {"name in another case", "Artist=[x]", "ARTIST=[x]", "No changes"},
        {"value in another case", "Artist=[x]", "ARTIST=[X]", "ARTIST = \"X\""},
        {"values in another order", "A=[x][y]", "A=[y][x]", "A = \"y\"; \"x\""},
        {"one value more", "A=[x]", "A=[x][]", "A = \"x\"; \"\""},
        {"one value less", "A=[x][y]", "A=[x]", "A = \"x\""},
        {"added", "", "comment=[x]", "COMMENT = \"x\""},
        {"removed", "comment=[x]", "", "COMMENT removed"},
        {"removed before added", "a=[x]", "b=[y]", "A removed; B = \"y\""},
        {"added before removed", "b=[x]", "a=[y]", "A = \"y\"; B removed"},
        {"unchanged ones between", "c=[1] b=[1] a=[1]", "a=[2] b=[1] c=[2]", "A = \"2\"; C = \"2\""},
        {"order of folded bytes", "", "AB=[1] a=[2] [x=[3] _x=[4]",
         "[X = \"3\"; _X = \"4\"; A = \"2\"; AB = \"1\""},
        {"other bytes come first", "", "!=[1] \u00E9=[2] \u00C9=[3]",
         "\u00C9 = \"3\"; \u00C9 = \"2\"; ! = \"1\""},
        {"upper case of any letter", "", "stra\u00DFe=[1]", "STRASSE = \"1\""},
        {"49 characters", "", "A=[" + repeat("\u00E9", 49) + "]", "A = \"" + repeat("\u00E9", 49) + "\""},
        {"50 characters", "", "A=[" + repeat("\u00E9", 50) + "]",
         "A = \"" + repeat("\u00E9", 50) + " (...)\""},
        {"51 characters", "", "A=[" + repeat("x", 51) + "]", "A = \"" + repeat("x", 50) + " (...)\""},
        {"two lines", "", "A=[x\ny][\r\nz]", "A = \"x (...)\"; \" (...)\""},
        {"break just before the end", "", "A=[" + repeat("x", 48) + "\ny]",
         "A = \"" + repeat("x", 48) + " (...)\""},
        {"long, with an early break", "", "A=[x\r\n" + repeat("y", 60) + "]", "A = \"x (...)\""},
        {"long, with a late break", "", "A=[" + repeat("x", 50) + "\ny]",
         "A = \"" + repeat("x", 50) + " (...)\""},
        {"a difference that is not shown", "A=[" + repeat("x", 60) + "]", "A=[" + repeat("x", 61) + "]",
         "A = \"" + repeat("x", 50) + " (...)\""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(describe_changes(tags(row.before), tags(row.after)), row.text) << row.name;
}

TEST(ChangeText, IsOfMetadataOnly) {
    TrackInfoRecord edited;
    edited.set_technical("codec", "MP3");
    edited.set_length(3);
    edited.set_replay_gain({.track_gain = 1});
    EXPECT_EQ(describe_changes(TrackInfoRecord(), edited), "No changes");
}

TEST(ChangeText, PreviewsEndAtTheFirstLineBreak) {
    TrackInfoRecord after;
    after.set_field("A\nB", "x");
    EXPECT_EQ(describe_changes(TrackInfoRecord(), after), "A\nB = \"x\"");
    EXPECT_EQ(preview_text(TrackInfoRecord(), after), "A (...)");
    EXPECT_EQ(preview_text(after, after), no_changes);
    EXPECT_EQ(preview_text(std::runtime_error("no\r\nway")), "Erorr: no (...)");
}

} // namespace
} // namespace quorvex
