#include "engine/run.h"

#include "tests/support/fake_actions.h"
#include "tests/support/fake_host.h"
#include "tests/support/short_forms.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;
using test::FakeAction;
using test::kind;

class Run : public test::WithHost {
protected:
    static Ref<FakeAction> counting(const char* text) { return make_service<FakeAction>(kind(1), text); }
    static Ref<FakeAction> grouping(const char* text, std::uint8_t number = 2) {
        return make_service<FakeAction>(kind(number), text, true);
    }
    /// What the script has done to the track, which it is forgotten of.
    std::string log(const char* path) { return test::tags_text(std::exchange(tag_io_.track(path).tags, {})); }
};

TEST_F(Run, CountsTracksInTheListAndInGroups) {
    const struct {
        const char* tracks; // the last character is the group
        const char* positions;
    } rows[] = {
        {"a1 b1 c2", "a1 0/3 0/2; b1 1/3 1/2; c2 2/3 0/1; "},
        {"a1 b2 c1", "a1 0/3 0/1; b2 1/3 0/1; c1 2/3 0/1; "},
        {"a0 b0 c1 d1", "a0 0/4 0/2; b0 1/4 1/2; c1 2/4 0/2; d1 3/4 1/2; "},
        {"a1 b1 a1", "a1 2/3 2/3; b1 1/3 1/3; "},
        {"a1 c1 b2 a1", "a1 3/4 0/1; b2 2/4 0/1; c1 1/4 1/2; "},
        {"a1 b2 a1 c1", "a1 2/4 0/2; b2 1/4 0/1; c1 3/4 1/2; "},
    };
    for (const auto& row : rows) {
        run_script({counting(""), grouping("")}, tag_io_.tracks(row.tracks), nullptr, nullptr);
        std::string text;
        for (const char* path : {"a0", "a1", "b0", "b1", "b2", "c1", "c2", "d1"})
            if (TrackInfoRecord& tags = tag_io_.track(path).tags; tags.field_count() > 0) {
                text += std::string(path) + tags.value(0, 0) + tags.value(0, 1) + "; ";
                tags = {};
            }
        EXPECT_EQ(text, row.positions) << row.tracks;
    }
}

TEST_F(Run, GroupsOncePerKindAndText) {
    const auto keys_asked = [&](const Ref<FakeAction>& first, const Ref<FakeAction>& second) {
        const RunIndex index(Script{first, second}, tag_io_.tracks("a1 b1 c2"));
        return first->keys_asked + second->keys_asked;
    };
    EXPECT_EQ(keys_asked(grouping("x"), grouping("x")), 3);
    EXPECT_EQ(keys_asked(grouping("x"), grouping("y")), 6);
    EXPECT_EQ(keys_asked(grouping("x", 2), grouping("x", 3)), 6);
    EXPECT_EQ(keys_asked(counting("x"), grouping("x", 1)), 3);
    EXPECT_EQ(keys_asked(counting("x"), counting("y")), 0);
}

TEST_F(Run, FiltersTracksOfItsListOnly) {
    const auto action = counting("x");
    const auto filter = make_service<ScriptFilter>(Script{grouping("g"), action}, tag_io_.tracks("a1 b2"));
    EXPECT_EQ(test::references(*action), 2U) << "the filter keeps its actions alive";
    TrackInfoRecord info;
    EXPECT_FALSE(filter->apply(&tag_io_.track("absent1"), {}, info));
    EXPECT_EQ(test::tags_text(info), "");
    EXPECT_TRUE(filter->apply(&tag_io_.track("b2"), {}, info));
    EXPECT_EQ(test::tags_text(info), "LOG=[g 0/1][x 1/2]");
    const auto failing = make_service<ScriptFilter>(Script{counting("fail")}, tag_io_.tracks("a1"));
    EXPECT_THROW(failing->apply(&tag_io_.track("a1"), {}, info), vantaro_io::exception_io);
}

TEST_F(Run, GoesThroughTheHostsUpdate) {
    run_script({counting("x")}, tag_io_.tracks("a1 b1 a1"), host_.main_window(), notify_.get());
    EXPECT_EQ(host_.take_events(), "update of a1 b1 a1, main window, flags 8, watched\nnotified 0");
    run_script({counting("fail")}, tag_io_.tracks("a1"), this, nullptr);
    EXPECT_EQ(host_.take_events(), "update of a1, window, flags 8\na1 failed: no such luck");
    run_script({counting("x")}, {}, nullptr, notify_.get());
    EXPECT_EQ(host_.take_events(), "");
    EXPECT_EQ(test::references(*notify_), 1U);
}

TEST_F(Run, AsksWhetherToGoOnWithPartOfAStoredScript) {
    host_.offer<ActionType>(make_service<test::FakeType>(kind(1), "known"));
    const std::string asked =
        "asked Warning: Some parts of the script failed to load. Continue ? [ok] [cancel] in a window\n";
    const std::string updated = "update of a1 b1, window, flags 8, watched\nnotified 0\nstarted ";
    const StoredAction unknown{kind(9), ""};
    const struct {
        const char* name;
        std::vector<StoredAction> actions;
        std::uint32_t answer;
        std::string events;
        const char* tracks = "a1 b1";
    } rows[] = {
        {"whole", {{kind(1), "x"}, {kind(1), "y"}}, 0, updated + "LOG=[x 1/2][y 1/2]"},
        {"OK", {{kind(1), "x"}, unknown, {kind(1), "y"}}, button::ok, asked + updated + "LOG=[x 1/2][y 1/2]"},
        {"Cancel", {{kind(1), "malformed"}, {kind(1), "y"}}, button::cancel, asked + "not started "},
        {"no answer", {unknown}, 0, asked + "not started "},
        {"OK to nothing", {unknown}, button::ok, asked + updated},
        {"no tracks", {unknown}, button::ok, "not started ", ""},
    };
    for (const auto& row : rows) {
        answer_ = row.answer;
        const bool started =
            run_stored_script({"", row.actions}, tag_io_.tracks(row.tracks), this, notify_.get());
        host_.note((started ? "started " : "not started ") + log("b1"));
        EXPECT_EQ(host_.take_events(), row.events) << row.name;
        EXPECT_EQ(test::references(*notify_), 1U) << row.name;
    }
    EXPECT_THROW(run_stored_script({"", {{kind(1), "large"}}}, tag_io_.tracks("a1"), this, notify_.get()),
                 std::bad_alloc);
}

} // namespace
} // namespace quorvex
