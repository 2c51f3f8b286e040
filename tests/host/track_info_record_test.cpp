#include "tests/support/short_forms.h"

#include <gtest/gtest.h>

#include <functional>

namespace vantaro {
namespace {

using test::tags;
using test::tags_text;

TEST(TrackInfoRecord, IsEditedInPlace) {
    using Info = TrackInfoRecord;
    const struct {
        const char* name;
        const char* before;
        std::function<void(Info&)> edit;
        const char* after;
    } rows[] = {
        {"set keeps place and spelling", "AtoZ=[a][b] TITLE=[t]", [](Info& i) { i.set_field("aTOz", "c"); },
         "AtoZ=[c] TITLE=[t]"},
        {"set creates behind", "B=[b]", [](Info& i) { i.set_field("A", ""); }, "B=[b] A=[]"},
        {"set to its own value", "A=[x][y]", [](Info& i) { i.set_field(i.field_name(0), i.value(0, 1)); },
         "A=[y]"},
        {"set creates from its own texts", "A=[x]",
         [](Info& i) { i.set_field(i.value(0, 0), i.field_name(0)); }, "A=[x] x=[A]"},
        {"only ASCII letters fold", "\u00E9=[x]", [](Info& i) { i.set_field("\u00C9", "y"); },
         "\u00E9=[x] \u00C9=[y]"},
        {"add appends", "A=[x]", [](Info& i) { i.add_value("a", "x"); }, "A=[x][x]"},
        {"add of its own value", "A=[x]", [](Info& i) { i.add_value("A", i.value(0, 0)); }, "A=[x][x]"},
        {"add creates", "", [](Info& i) { i.add_value("A", "x"); }, "A=[x]"},
        {"insert of its own value", "A=[x][y]", [](Info& i) { i.insert_value(0, 0, i.value(0, 1)); },
         "A=[y][x][y]"},
        {"insert at the end", "A=[x]", [](Info& i) { i.insert_value(0, 1, ""); }, "A=[x][]"},
        {"modify to its own value", "A=[x][y]", [](Info& i) { i.modify_value(0, 0, i.value(0, 1)); },
         "A=[y][y]"},
        {"remove one value", "A=[x][y]", [](Info& i) { i.remove_values(0, MaskOne(0)); }, "A=[y]"},
        {"remove the last value", "A=[x] B=[y]", [](Info& i) { i.remove_values(0, MaskOne(0)); }, "B=[y]"},
        {"remove all values", "A=[x][y] B=[y]", [](Info& i) { i.remove_values(0, MaskAll()); }, "B=[y]"},
        {"remove one field", "A=[x] B=[y] C=[z]", [](Info& i) { i.remove_fields(MaskOne(1)); },
         "A=[x] C=[z]"},
        {"technical fields stand apart", "A=[x]",
         [](Info& i) {
             i.set_technical("codec", "MP3");
             i.set_technical("CODEC", "FLAC");
             i.set_technical("a", i.technical_value(0));
         },
         "A=[x] <codec=FLAC> <a=FLAC>"},
        {"copy of itself", "A=[x]", [](Info& i) { i.copy(i); }, "A=[x]"},
    };
    for (const auto& row : rows) {
        Info info = tags(row.before);
        row.edit(info);
        EXPECT_EQ(tags_text(info), row.after) << row.name;
    }
}

TEST(TrackInfoRecord, CopiesEverything) {
    TrackInfoRecord source = tags("A=[x][] B=[y]");
    source.set_technical("codec", "MP3");
    source.set_length(1.5);
    source.set_replay_gain({.track_gain = -3});
    TrackInfoRecord target = tags("C=[z]");
    target.set_technical("bitrate", "320");
    target.copy(source);
    EXPECT_EQ(tags_text(target), "A=[x][] B=[y] <codec=MP3> 1.5s -3dB");
    EXPECT_EQ(target.find_field("b"), 1U);
    EXPECT_EQ(target.find_field("codec"), no_field);
    EXPECT_EQ(target.find_technical("bitrate"), no_field);
}

} // namespace
} // namespace vantaro
