#include "actions/auto_track_number.h"

#include "component/configuration.h"
#include "engine/run_index.h"
#include "tests/actions/kinds_fixture.h"

#include <deque>
#include <sstream>

namespace quorvex {
namespace {

using namespace vantaro;

class Numbering : public test::Kinds {
protected:
    /// Numbers tracks whose held albums stand between blanks; "1/2 2/2 1/1 ".
    std::string numbers(const std::string& pattern, const std::string& albums) {
        std::deque<core::Track> tracks;
        TrackList list;
        std::istringstream words(albums);
        for (std::string album; words >> album;) {
            core::Track& track = tracks.emplace_back("/" + std::to_string(tracks.size()), 0U);
            track.hold(make_service<core::HeldInfo>(test::tags("ALBUM=[" + album + "]"), FileStats(), false));
            list.emplace_back(&track);
        }
        const Script script{action(kind, pattern)};
        const RunIndex positions(script, list);
        std::string text;
        for (const Ref<TrackHandle>& track : list) {
            // An album that an action before has set is not the one that counts.
            TrackInfoRecord info = test::tags("ALBUM=[edited] tracknumber=[03][3/12]");
            const RunContext* at = positions.find(0, track.get());
            script[0]->apply(track.get(), info, at->index, at->total);
            EXPECT_EQ(info.value_count(1), 1U);
            text += std::string(info.value(1, 0)) + '/' + info.value(2, 0) + ' ';
            EXPECT_STREQ(info.field_name(2), "TOTALTRACKS");
        }
        return text;
    }
    static constexpr Guid kind = AutoTrackNumber::kind;
};

TEST_F(Numbering, CountsNeighboursOfOneAlbum) {
    EXPECT_EQ(numbers("%album%", "A A B B B"), "1/2 2/2 1/3 2/3 3/3 ");
    EXPECT_EQ(numbers("%album%", "A B A"), "1/1 1/1 1/1 ");
    EXPECT_EQ(numbers("", "A B A"), "1/3 2/3 3/3 ");
    EXPECT_EQ(numbers("$lower(%album%)", "A a b"), "1/2 2/2 1/1 ");
    EXPECT_EQ(numbers("%missing%", "A B"), "1/2 2/2 ");
    EXPECT_EQ(numbers("$if(", "A B"), "1/2 2/2 ") << "a pattern that does not compile is one album";
    EXPECT_TRUE(numbers("%album%", test::repeat("A ", 12)).ends_with(" 11/12 12/12 "));
    EXPECT_EQ(edited(kind, "", "", 4294967295U, 4294967295U),
              "TRACKNUMBER=[4294967296] TOTALTRACKS=[4294967295]");
}

TEST_F(Numbering, KeysAreDigestsOfWhatThePatternGives) {
    track_.hold(make_service<core::HeldInfo>(test::tags("ALBUM=[a] TITLE=[bc]"), FileStats(), false));
    // MD5 of "abc", of no bytes, and of "<ERROR>".
    EXPECT_EQ(to_text(action(kind, "%album%%title%")->get_group_key(&track_)),
              "{98500190-D23C-B04F-D696-3F7D28E17F72}");
    EXPECT_EQ(to_text(action(kind, "[%missing%]")->get_group_key(&track_)),
              "{D98C1DD4-008F-04B2-E980-0998ECF8427E}");
    const Guid error = digests_.digest("<ERROR>", 7);
    EXPECT_EQ(action(kind, "$if(")->get_group_key(&track_), error);
    EXPECT_EQ(action(kind, "")->get_group_key(&track_), Guid());
    EXPECT_TRUE(action(kind, " ")->uses_group_key());
    EXPECT_FALSE(action(kind, "")->uses_group_key());
}

TEST_F(Numbering, Texts) {
    expect_texts(kind, {{"", "Auto track number"}, {"%album%\n|", "Auto track number"}});
    EXPECT_EQ(defaults(kind), "");
    text_setting(setting::album_separation_pattern).set("%album%");
    EXPECT_EQ(defaults(kind), "%album%");
}

} // namespace
} // namespace quorvex
