#include "engine/dry_run.h"

#include "tests/support/failures.h"
#include "tests/support/fake_actions.h"
#include "tests/support/fake_host.h"
#include "tests/support/short_forms.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;
using test::FakeAction;
using test::kind;

class DryRuns : public test::WithHost {
protected:
    static Ref<FakeAction> counting(const char* text) { return make_service<FakeAction>(kind(1), text); }
    static Ref<FakeAction> grouping(const char* text, std::uint8_t number = 2) {
        return make_service<FakeAction>(kind(number), text, true);
    }
    static std::string edited(DryRun& dry_run, const Script& script, std::size_t row,
                              const Action* skipped = nullptr) {
        TrackInfoRecord info;
        dry_run.edit(script, row, info, skipped);
        return test::tags_text(info);
    }
};

TEST_F(DryRuns, CountsByRowAndByGroup) {
    const struct {
        const char* tracks; // the last character is the group
        std::vector<const char*> rows;
    } lists[] = {
        {"a1 b1 c2", {"[n 0/3][g 0/2]", "[n 1/3][g 1/2]", "[n 2/3][g 0/1]"}},
        {"a1 b2 c1", {"[n 0/3][g 0/1]", "[n 1/3][g 0/1]", "[n 2/3][g 0/1]"}},
        // Listed twice: each row counts as itself, but a group table has one position for the track.
        {"a1 b1 a1", {"[n 0/3][g 2/3]", "[n 1/3][g 1/3]", "[n 2/3][g 2/3]"}},
        {"a1 c1 b2 a1", {"[n 0/4][g 0/1]", "[n 1/4][g 1/2]", "[n 2/4][g 0/1]", "[n 3/4][g 0/1]"}},
    };
    for (const auto& list : lists) {
        DryRun dry_run(tag_io_.tracks(list.tracks));
        ASSERT_EQ(dry_run.tracks().size(), list.rows.size());
        for (std::size_t row = 0; row < list.rows.size(); ++row)
            EXPECT_EQ(edited(dry_run, {counting("n"), grouping("g")}, row),
                      std::string("LOG=") + list.rows[row])
                << list.tracks;
    }
    EXPECT_EQ(host_.take_events(), "") << "nothing is asked of the host";
}

TEST_F(DryRuns, KeepsItsGroups) {
    DryRun dry_run(tag_io_.tracks("a1 b1 c2"));
    const auto first = grouping("x");
    const auto same = grouping("x");
    const auto other_text = grouping("y");
    const auto other_kind = grouping("x", 3);
    for (std::size_t row : {0U, 1U, 2U, 1U})
        edited(dry_run, {first, same, other_text, other_kind}, row);
    edited(dry_run, {same}, 0);
    EXPECT_EQ(first->keys_asked, 3);
    EXPECT_EQ(same->keys_asked, 0) << "shares the table";
    EXPECT_EQ(other_text->keys_asked, 3);
    EXPECT_EQ(other_kind->keys_asked, 3);
    dry_run.forget_groups();
    edited(dry_run, {same, first}, 2);
    EXPECT_EQ(first->keys_asked + same->keys_asked, 6);
}

TEST_F(DryRuns, EditsTheTagsThatItIsGiven) {
    DryRun dry_run(tag_io_.tracks("a1 b1"));
    tag_io_.track("b1").tags = test::tags("LOG=[in the file]");
    const auto skipped = grouping("s");
    EXPECT_EQ(edited(dry_run, {counting("x"), skipped, counting("y")}, 1, skipped.get()),
              "LOG=[x 1/2][y 1/2]");
    EXPECT_EQ(skipped->keys_asked, 0);
    EXPECT_EQ(edited(dry_run, {}, 0), "");
    EXPECT_EQ(edited(dry_run, {skipped}, 0, skipped.get()), "");
    EXPECT_EQ(test::tags_text(tag_io_.track("b1").tags), "LOG=[in the file]");

    TrackInfoRecord info;
    EXPECT_EQ(test::failure_of([&] {
                  dry_run.edit({counting("x"), counting("fail"), counting("y")}, 0, info);
              }),
              "no such luck");
    EXPECT_EQ(test::tags_text(info), "LOG=[x 0/2]");
}

} // namespace
} // namespace quorvex
