#include "actions/guess_values.h"

#include "actions/guess_matcher.h"
#include "actions/input_data.h"
#include "component/configuration.h"
#include "tests/actions/kinds_fixture.h"
#include "tests/support/memory_files.h"

namespace quorvex {
namespace {

using namespace vantaro;

TEST(GuessMatcher, TakesFieldsOutOfATextByAPattern) {
    const struct {
        const char* pattern;
        const char* subject;
        const char* found;
    } rows[] = {
        {"%tracknumber%. %title%", "01. Intro", "tracknumber=[01] title=[Intro]"},
        {"%artist% - %title%", "Band  -   Song", "artist=[Band] title=[Song]"},
        {"%artist% - %title%", "Band\t - \tSong", "artist=[Band] title=[Song]"},
        {"%artist% - %title%", "Band-Song", "artist=[Band-Song]"},
        {"%artist% - %title%", "Band -", "artist=[Band -]"},
        {"%artist% - %title%", "Band - ", "artist=[Band]"},
        {"%artist%  \t-%title%", "Band -Song", "artist=[Band] title=[Song]"},
        {"CD %disc%", "2", "disc=[2]"},
        {"CD %disc%", "CD   2 ", "disc=[2]"},
        {"CD %disc%", "xCD 2", "disc=[xCD 2]"},
        {"CD%disc%", "CD 2", "disc=[ 2]"},
        {" %a%", "x", "a=[x]"},
        {"%% - %title%", "01 - Song", "title=[Song]"},
        {"%a%%b%", "ab", "a=[ab]"},
        {"%a%X%b%", "1x2X3", "a=[1x2] b=[3]"},
        {"%a%-%b%", "1-2-3", "a=[1] b=[2-3]"},
        {"%a%-%b%", "-2", "b=[2]"},
        {"%a%-%b%-", "1-2", "a=[1] b=[2]"},
        {"%a%aab%b%", "aaab.", "a=[a] b=[.]"},
        {"%a%-%a%", "1-2", "a=[2]"},
        {"%a%-%a%", "1-", "a=[1]"},
        {"%a%-%A%", "1-2", "a=[2]"},
        {"%a% ", "1 2", "a=[1]"},
        {"%a%-%b%", " -x\t ", "a=[] b=[x]"},
        {"%a b=%", "x", "a b==[x]"},
        {"%a", "x", ""},
        {"%a%-%b", "1-2", "a=[1]"},
        {"x", "x", ""},
        {"", "x", ""},
        {"%a%", "", ""},
        {"%a%\u00E9%b%", "1\u00E92", "a=[1] b=[2]"},
        {"%a%\xC3%b%", "1\u00E92",
         "a=[1] b=[\xA9"
         "2]"},
    };
    for (const auto& row : rows) {
        TrackInfoRecord info;
        guess_fields(info, row.subject, row.pattern);
        EXPECT_EQ(test::tags_text(info), row.found) << row.pattern << " on " << row.subject;
    }
    TrackInfoRecord info = test::tags("TITLE=[a][b] ALBUM=[c]");
    guess_fields(info, "x - y", "%title% - %comment% - %album%");
    EXPECT_EQ(test::tags_text(info), "TITLE=[x] ALBUM=[c] comment=[y]");
}

TEST(GuessFromPath, MatchesFromTheRight) {
    const struct {
        const char* pattern;
        const char* path;
        const char* found;
    } rows[] = {
        {"%artist%/%album%/%tracknumber% - %title%", "C:\\Music\\Band\\Record\\07 - Song.mp3",
         "tracknumber=[07] title=[Song] album=[Record] artist=[Band]"},
        {"%artist%|%album%:%title%", "/m/Band/Record/Song.x.mp3",
         "title=[Song.x] album=[Record] artist=[Band]"},
        {"%album%/", "/m/Rec.ord/Song.mp3", "album=[Rec.ord]"},
        {"%artist%//%title%", "/m/Band/Record/Song.mp3", "title=[Song] artist=[Band]"},
        {"/%title%", "/m/Song.mp3", "title=[Song]"},
        {"%a%/%b%/%title%", "Song.mp3", "title=[Song]"},
        {"%a%/%title%", "/Song.mp3", "title=[Song]"},
        {"%a%/%a%", "/m/Left/Right.mp3", "a=[Left]"},
        {"%title%", "/m/Song", "title=[Song]"},
        {"%title%", "/m/.Song", "title=[.Song]"},
        {"%title%", "/m/.Song.mp3", "title=[.Song]"},
        {"%title%", "/m/Song.", "title=[Song]"},
        {"%title%", "/m/Song.mp3?a.b", "title=[Song]"},
        {"%title%", "/m/Song?a.b", "title=[Song?a.b]"},
        {"", "/m/Song.mp3", ""},
        {"/", "/m/Song.mp3", ""},
    };
    for (const auto& row : rows) {
        TrackInfoRecord info;
        guess_fields_from_path(info, row.path, row.pattern);
        EXPECT_EQ(test::tags_text(info), row.found) << row.pattern << " on " << row.path;
    }
}

using GuessKinds = test::Kinds;

TEST_F(GuessKinds, FromFileName) {
    const Guid kind = GuessFromFileName::kind;
    expect_edits(kind, {{"%artist%\\%album%/%n% - %title%", "TITLE=[x] GENRE=[y]",
                         "TITLE=[Song] GENRE=[y] n=[07] album=[Record] artist=[Band]"},
                        {"", "A=[x]", "A=[x]"}});
    expect_texts(kind, {{"%a%\n%b%", "Guess values from filename: \"%a%\n%b%\""}});
    EXPECT_EQ(defaults(kind), "%tracknumber%. %artist% - %title%");

    // The path is read as it is shown to people.
    host_.offer<FileSystem>(make_service<test::MemoryFiles>());
    core::Track shown("mem:Song.mp3", 0);
    TrackInfoRecord info;
    action(kind, "%drive%:%title%")->apply(&shown, info, 0, 1);
    EXPECT_EQ(test::tags_text(info), "title=[Song]");
}

TEST_F(GuessKinds, FromFields) {
    const Guid kind = GuessFromFields::kind;
    track_.hold(make_service<core::HeldInfo>(test::tags("COMMENT=[held - held]"), FileStats(), false));
    expect_edits(kind,
                 {
                     {"%a% - %b%\n%comment%", "COMMENT=[x - y - z]", "COMMENT=[x - y - z] a=[x] b=[y - z]"},
                     {"%title%\n%artist%", "ARTIST=[x][y]", "ARTIST=[x][y] title=[x, y]"},
                     {"%n% of %t%\n%list_index% of %_QUORVEX_TOTAL%", "", "n=[1] t=[1]"},
                     {"%a%\n[%now%]", "A=[x]", "A=[x]"},
                     {"%a%\n$if(", "", "a=[<ERROR>]"},
                     {"%a%|%b%\nx|y", "", "a=[x] b=[y]"},
                     {"\nx", "A=[x]", "A=[x]"},
                     {"%a%\n", "A=[x]", "A=[x]"},
                 });
    expect_texts(kind, {{"%a%\n%b%\n%c%\n", "Guess value from other fields"}});
    expect_rejected(kind, {"", "%a%"});
    text_setting(setting::last_guess_pattern).set("%x%");
    EXPECT_EQ(defaults(kind), "%x%\n");
    EXPECT_EQ(defaults(GuessFromFileName::kind), "%x%");
    EXPECT_EQ(host_.take_events(), "") << "no clock";

    // Line feeds in the pattern become "|" for good, those in the source stay.
    const auto typed = make_service<GuessFromFields>();
    typed->accept({"%a%\n%b%", "1\n2|3"});
    EXPECT_EQ(parameters(*typed), "%a%|%b%\n1\n2|3");
    TrackInfoRecord info;
    typed->apply(&track_, info, 0, 1);
    EXPECT_EQ(test::tags_text(info), "a=[12] b=[3]");
}

TEST_F(GuessKinds, InputDataGivesEachTrackALine) {
    const struct {
        const char* data;
        const char* lines; // of tracks 0 to 3
    } rows[] = {
        {"A\nB\nC", "A,B,C,-,"},    {"A\r\nB\r\n", "A,B,-,-,"}, {"A\n\nC", "A,-,C,-,"},
        {"A\rB\nC", "A,C,-,-,"},    {"\rA\nB", "-,B,-,-,"},     {"A\nB\rC", "A,B,-,-,"},
        {"\n\n\nD\nE", "-,-,-,D,"}, {" A \n\n", "A,-,-,-,"},    {"", "-,-,-,-,"},
    };
    for (const auto& row : rows) {
        std::string lines;
        for (std::uint32_t index = 0; index < 4; ++index) {
            TrackInfoRecord info;
            action(InputData::kind, std::string(" %title%\n") + row.data)->apply(&track_, info, index, 4);
            lines += std::string(info.field_count() == 0 ? "-" : info.value(0, 0)) + ',';
        }
        EXPECT_EQ(lines, row.lines) << row.data;
    }
    expect_edits(InputData::kind,
                 {{"%tracknumber%. %title%\n01. Intro", "", "tracknumber=[01] title=[Intro]"},
                  {"%a%:%b%\nx", "B=[y]", "B=[y] a=[x]"}});
    expect_texts(InputData::kind, {{"%title%\nx\r\ny\n", "Input data (one line per track)..."},
                                   {"\n", "Input data (one line per track)..."}});
    expect_rejected(InputData::kind, {"", "%title%"});
    EXPECT_EQ(defaults(InputData::kind), "%tracknumber%. %title%\n");
    const auto typed = make_service<InputData>();
    typed->accept({"%a%\n%b%", "x\ny"});
    EXPECT_EQ(parameters(*typed), "%a%|%b%\nx\ny");
}

} // namespace
} // namespace quorvex
