// The language itself: parts of patterns, fields with their fall-backs, values, hooks, filters, errors.
#include "tests/titleformat/sample_track.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace vantaro::core {
namespace {

using test::SampleTrack;

struct Expectation {
    const char* pattern;
    const char* result;
};

void expect_all(SampleTrack& track, std::initializer_list<Expectation> rows) {
    for (const Expectation& row : rows)
        EXPECT_EQ(track.formatted(row.pattern), row.result) << row.pattern;
}

TrackInfoRecord two_artists() {
    TrackInfoRecord tags;
    tags.set_field("Title", "Rope");
    tags.add_value("ARTIST", "Osk");
    tags.add_value("ARTIST", "Mara");
    tags.set_field("EMPTY", "");
    tags.set_field("ZERO", "0");
    return tags;
}

TEST(TitleFormatLanguage, ReadsParts) {
    SampleTrack track(two_artists());
    expect_all(track, {
                          {"", ""},
                          {"<ERROR>", "<ERROR>"},
                          {"%TITLE%%title%", "RopeRope"},
                          {"a), (b", "a), (b"},
                          {"$", "$"},
                          {"$5 $ $-", "$5 $ $-"},
                          {"100%%", "100%"},
                          {"''", "'"},
                          {"'a''b'", "a'b"},
                          {"'''a'''", "'a'"},
                          {"$UPPER(a)", "A"},
                          // blanks are text, layout is not
                          {" $upper( a ) ", "  A  "},
                          {"$if(%title%,\r\n\t  x,\n  y\n)\n z", "xz"},
                          {"'a\n b'", "a\n b"},
                          {"// note %\na// b\n  // note [\nc", "a// bc"},
                          {"//", ""},
                          {"http://x", "http://x"},
                          // parentheses within arguments
                          {"$upper((a,b))$upper(a(b(c)))", "(A,B)A(B(C))"},
                          {"$upper('(')$upper(a')'b)", "(A)B"},
                          {"$upper($lower((A)))", "(A)"},
                          {"$upper([(a)%title%])", "(A)ROPE"},
                      });
}

TEST(TitleFormatLanguage, DropsSectionsWithoutFields) {
    SampleTrack track(two_artists());
    expect_all(track, {
                          {"[a]", ""},
                          {"[%nope%a]", ""},
                          {"[%nope%%title%]", "Rope"},
                          {"[a[%nope%b]c%title%]", "acRope"},
                          {"[a[%title%]c]", "aRopec"},
                          {"[%empty%a]", "a"},
                          {"[$upper(%title%)]", "ROPE"},
                          {"[$if(%title%,yes)]", "yes"},
                          {"[$if(,%title%,no)]", ""},
                          {"[$noop(%title%)a]", ""},
                          {"[$set(x,1)a][$set(x,)$get(x)b][$set(x,1)$get(x)c]", "1c"},
                          {"[$tag(title)a][$tag(nope)b][$technical(nope)c]", "Ropea"},
                      });
}

TEST(TitleFormatLanguage, ChoosesByConditions) {
    SampleTrack track(two_artists());
    expect_all(track,
               {
                   {"$if(%title%,a,b)$if(%nope%,a,b)$if(%empty%,a,b)$if(%zero%,a,b)$if(00,a,b)", "abbba"},
                   {"$if(%nope%,a)$if(1,)", ""},
                   {"$if2(%nope%,%empty%,0,x)", "0"},
                   {"$if2(%nope%)", ""},
                   {"$ifdef(%empty%,y,n)$ifdef(empty,y,n)$ifdef(%nope%,y,n)$ifdef(nope,y,n)", "yynn"},
                   {"$ifdef(title)$ifdef(%title%)$ifdef(%nope%)", "RopeRope"},
                   {"$ifdef($lower(TITLE),y)", "y"},
                   {"$select(0,a,b)$select(1,a,b)$select(3,a,b)$select(x,a,b)$select(-1,a,b)", "a"},
                   {"$and(%n%)|$or(%n%)|$and(1)|$or(0,0)|$and(1,0)", "||1||"},
                   {"$if($and(%title%,$not(%nope%)),y)", "y"},
                   // What is not needed is not evaluated.
                   {"$if(1,a,$set(x,1))$if2(a,$set(x,1))$and(0,$set(x,1))$or(1,$set(x,1))$select(1,a,$set(x,"
                    "1))$get(x)",
                    "aa1a"},
                   {"$ifdef(title,a,$set(x,1))$noop($set(x,1))$while(0,$set(x,1))$get(x)", "a"},
               });
}

TEST(TitleFormatLanguage, HandsValuesOnOneByOne) {
    SampleTrack track(two_artists());
    track.tags.add_value("GAPS", "a");
    track.tags.add_value("GAPS", "");
    track.tags.add_value("GAPS", "c, d");
    expect_all(
        track,
        {
            {"%artist%|$upper(%artist%)", "Osk, Mara|OSK, MARA"},
            {"%gaps%", "a, , c, d"},
            {"$lenmulti(%gaps%)$lenmulti(%empty%)$lenmulti(%nope%)$lenmulti(%n%)$lenmulti('a, b')", "31001"},
            {"$join(%gaps%,/)|$join($cleanmulti(%gaps%),/)", "a//c, d|a/c, d"},
            // Only what stands alone in its argument yields values.
            {"$lenmulti([%artist%])$lenmulti(%artist%%artist%)$lenmulti( "
             "%artist%)$lenmulti($upper(%artist%))",
             "2111"},
            {"$join($if(1,%artist%),/)|$join($if2(%nope%,%artist%),/)|$join($ifdef(artist),/)",
             "Osk/Mara|Osk/Mara|Osk/Mara"},
            {"$join($select(2,x,%artist%),/)|$join($noop(x),/)|$join($foo(a),/)",
             "Osk/Mara||[UNKNOWN FUNCTION $foo]"},
            {"$join($reversemulti($sortmulti(%artist%)),/)|$sortmulti(%artist%)", "Osk/Mara|Mara, Osk"},
            {"$map(%artist%,$if($eq(%_loop_value%,Osk),,%_loop_value%!))", "Mara!"},
            {"$map(%gaps%,%_loop_count%:%_loop_value%)", "1:a, 2:, 3:c, d"},
            {"$map(%artist%,<$map($splitmulti(x;y,;),%_loop_value%)%_loop_value%>)", "<x, yOsk>, <x, yMara>"},
            {"%_loop_value%%_loop_count%[%_loop_value%x]", ""},
            {"$join($map(%nope%,x),/)$foreach(%artist%,x)", ""},
            {"$getmulti(%artist%,0)$getmulti(%artist%,-2)$getmulti(%artist%,2)$getmulti(%artist%,-3)",
             "OskOsk"},
            {"$slice(%artist%,1)|$slice(%artist%,-1,9)|$slice(%artist%,,1)|$slice(%artist%,2)|$slice(%artist%"
             ",1,0)",
             "Mara|Mara|Osk||"},
            {"$set(x,%artist%)$lenmulti($get(x))$copy(x,%artist%)$lenmulti($get(x))$join($put(x,%artist%),/)",
             "12Osk, Mara"},
        });
}

TEST(TitleFormatLanguage, RunsLoopsAndNestedPatterns) {
    SampleTrack track(two_artists());
    expect_all(track,
               {
                   {"$len($while(1,x))", "1000"},
                   {"$set(n,3)$while($get(n),$set(n,$sub($get(n),1))$get(n))", "210"},
                   {"$while($lt(%_loop_count%,3),$while($lt(%_loop_count%,3),%_loop_count%);)", "12;12;"},
                   {"$set(p,'%'title'%')$format($get(p))", "Rope"},
                   {"[$format('%'nope'%')x]", ""},
                   {"$format('$upper')", "[There is no ( behind the function $upper]"},
                   {"$set(p,'$format($get(p))')$format($get(p))", "[TOO MANY STEPS]"},
               });
}

TEST(TitleFormatLanguage, FallsBackToOtherFields) {
    struct Case {
        const char* field; // nullptr: none
        const char* value;
        const char* pattern;
        const char* result;
    };
    const Case cases[] = {
        {nullptr, "", "%title%|%artist%|%album artist%", "Sample||"},
        {"ALBUM ARTIST", "Osk", "%artist%|%album artist%|%albumartist%", "Osk|Osk|Osk"},
        {"ALBUMARTIST", "Osk", "%artist%|%album artist%", "Osk|Osk"},
        {"ARTIST", "Osk", "%artist%|%album artist%", "Osk|Osk"},
        {"TRACKNUMBER", "3/12", "%tracknumber%|%track number%|%totaltracks%", "03|3|12"},
        {"TRACKNUMBER", "007", "%tracknumber%|%track number%|%totaltracks%", "07|7|"},
        {"TRACKNUMBER", "112", "%tracknumber%|%track number%", "112|112"},
        {"TRACKNUMBER", "000", "%tracknumber%|%track number%", "00|0"},
        {"TRACKNUMBER", "A1/2", "%tracknumber%|%track number%", "A1/2|A1/2"},
        {"TRACKNUMBER", "", "[%tracknumber%x]", "x"},
        {"TRACK", "3", "%tracknumber%", "03"},
        {"DISCNUMBER", "1/2", "%discnumber%|%totaldiscs%", "1|2"},
        {"TOTALDISCS", "2", "%discnumber%|%totaldiscs%", "|2"},
        {"YEAR", "1999", "%date%|%year%", "1999|1999"},
        {"DATE", "1999-12-31T00:00", "%date%|%year%", "1999-12-31T00:00|1999"},
        {"DATE", "31.12.1999", "%date%|%year%", "31.12.1999|"},
        {"REPLAYGAIN_TRACK_GAIN", "-1 dB", "%replaygain_track_gain%", "-1 dB"},
        {nullptr, "", "%replaygain_track_gain%%replaygain_album_peak%%length%%length_seconds%%bitrate%", ""},
        {nullptr, "", "%codec%|%__codec%|%__%", "FLAC||"},
        {nullptr, "", "%filesize%%filesize_natural%%last_modified%%list_index%", ""},
    };
    for (const Case& row : cases) {
        SampleTrack track;
        if (row.field)
            track.tags.set_field(row.field, row.value);
        EXPECT_EQ(track.formatted(row.pattern), row.result)
            << (row.field ? row.field : "") << '=' << row.value;
    }
}

TEST(TitleFormatLanguage, ShowsLengthsSizesAndPaths) {
    SampleTrack track;
    for (const auto& [seconds, text] : {std::pair{0.4, "0:00"},
                                        {59.6, "1:00"},
                                        {3599.0, "59:59"},
                                        {3600.0, "1:00:00"},
                                        {360000.0, "100:00:00"}}) {
        track.tags.set_length(seconds);
        EXPECT_EQ(track.formatted("%length%"), text);
    }
    for (const auto& [size, text] : {std::pair<std::uint64_t, const char*>{0, "0 B"},
                                     {1023, "1023 B"},
                                     {1536, "1.5 KB"},
                                     {std::uint64_t{1} << 30, "1.0 GB"}}) {
        track.stats = FileStats{size, 0};
        EXPECT_EQ(track.formatted("%filesize_natural%[%last_modified%x]"), text);
    }
    const Expectation paths[] = {
        {"Sample.flac", "Sample|flac|Sample.flac|||"},
        {"/Sample.flac", "Sample|flac|Sample.flac|||/"},
        {"/a/b/.hidden", ".hidden||.hidden|b|a|/a/b"},
        {"/a//b/c.d.e", "c.d|e|c.d.e|b|a|/a//b"},
        // A name that is not UTF-8 is in Windows-1252, whole.
        {"/m\xFCsic/\u00E9.\xC3.mp3",
         "\u00C3\u00A9.\u00C3|mp3|\u00C3\u00A9.\u00C3.mp3|m\u00FCsic||/m\u00FCsic"},
        {"/\u00FC/\u00E9.m\xDF"
         "3",
         "\u00C3\u00A9|m\u00DF3|\u00C3\u00A9.m\u00DF3|\u00FC||/\u00FC"},
    };
    for (const Expectation& row : paths) {
        track.location = row.pattern;
        EXPECT_EQ(track.formatted("%filename%|%extension%|%filename_ext%|%directoryname%|%"
                                  "parentdirectoryname%|%directorypath%"),
                  row.result);
    }
}

/// Knows the fields ARTIST and EMPTY and the functions $twice and $upper.
class SampleHook final : public TitleFormatHook {
public:
    bool process_field(const char* name, std::size_t length, TitleFormatOutput& out, bool& found) override {
        const std::string_view wanted(name, length);
        if (wanted != "artist" && wanted != "empty")
            return false;
        found = wanted == "artist";
        if (found)
            out.write("ho\0ok", 5);
        return true;
    }
    bool process_function(const char* name, std::size_t length, const TitleFormatArguments& arguments,
                          TitleFormatOutput& out, bool& found) override {
        const std::string_view wanted(name, length);
        if (wanted != "twice" && wanted != "upper" && wanted != "sortmulti")
            return false;
        found = wanted == "twice";
        for (int i = 0; i < 2; ++i)
            for (std::size_t j = 0; j < arguments.count(); ++j) {
                const std::string text = text_of([&](TextSink& sink) { arguments.get(j, sink); });
                out.write(text.data(), text.size());
            }
        return true;
    }
};

TEST(TitleFormatLanguage, AsksTheHookFirst) {
    SampleTrack track(two_artists());
    SampleHook hook;
    const Expectation rows[] = {
        {"%artist% %title%", "hook Rope"},
        {"[%empty%x][%artist%y]", "hooky"},
        {"$lenmulti(%artist%)$lenmulti(%empty%)", "10"},
        {"$ifdef(artist)$ifdef(empty,x)", "hook"},
        {"$twice(a,%title%)$upper(b)$lower(C)", "aRopeaRopebbc"},
        {"[$twice(a)][$upper(a)]", "aa"},
        {"$twice()$other(a)", "[UNKNOWN FUNCTION $other]"},
        {"$join($sortmulti($splitmulti(b; a)),/)", "b, ab, a"},
    };
    for (const Expectation& row : rows)
        EXPECT_EQ(track.formatted(row.pattern, &hook), row.result) << row.pattern;
}

/// Writes field values in two pieces between brackets.
class BracketFilter final : public TitleFormatTextFilter {
public:
    void write(TitleFormatOutput& out, const char* text, std::size_t length) override {
        out.write("<", 1);
        out.write(text, length);
        out.write("\0>", 2);
    }
};

TEST(TitleFormatLanguage, FiltersFieldValuesOnly) {
    SampleTrack track(two_artists());
    BracketFilter filter;
    EXPECT_EQ(track.formatted("a%artist% $upper(%title%)%nope%$join(%artist%,/)", nullptr, &filter),
              "a<Osk>, <Mara> <ROPE><Osk>/<Mara>");
    SampleHook hook;
    EXPECT_EQ(track.formatted("%artist%$twice(a)", &hook, &filter), "<hook>aa");
}

TEST(TitleFormatLanguage, TellsWhereAPatternIsWrong) {
    SampleTrack track;
    expect_all(track, {
                          {"ab[cd[e]", "ERROR 2: This [ is not closed"},
                          {"ab]", "ERROR 2: This ] closes nothing"},
                          {"[a$upper(b]", "ERROR 10: This ] closes nothing"},
                          {"a %b", "ERROR 2: This % has no second one behind the name of the field"},
                          {"$upper(%a)", "ERROR 7: This % has no second one behind the name of the field"},
                          {"x'a''b", "ERROR 1: This quote is not closed"},
                          {"$upper($lower(a)", "ERROR 0: The parenthesis of $upper is not closed"},
                          {"$upper(a(b)", "ERROR 0: The parenthesis of $upper is not closed"},
                          {"$upper(((", "ERROR 8: This parenthesis is not closed"},
                          {"a$upper b", "ERROR 1: There is no ( behind the function $upper"},
                          {"a$left(b)", "ERROR 1: $left takes 2 arguments, not 1"},
                          {"$upper($rand(x))", "ERROR 7: $rand takes no arguments, not 1"},
                          {"$Upper()", "ERROR 0: $upper takes 1 argument, not 0"},
                          {"$if(a)", "ERROR 0: $if takes 2 or 3 arguments, not 1"},
                          {"$first(1,2,3,4,5,6)", "ERROR 0: $first takes 1 to 5 arguments, not 6"},
                          {"$min()", "ERROR 0: $min takes at least 1 argument, not 0"},
                      });
}

TEST(TitleFormatLanguage, ExplainsFunctionsThatAreNotThere) {
    const struct {
        const char* pattern;
        const char* explanation;
    } rows[] = {
        {"%foo% '$foo()' $upper(a)", ""},
        {"ab$foo(%a%)", "2: There is no function $foo"},
        {"$if(a,b,[$Foo()$bar()])", "9: There is no function $Foo"},
        {"$foo($left(x))", "5: $left takes 2 arguments, not 1"},
    };
    TitleFormattingDiagnosis diagnosis;
    for (const auto& row : rows) {
        StringSink text;
        std::size_t position = 0;
        const bool is_wrong = diagnosis.explain(row.pattern, text, position);
        EXPECT_EQ(is_wrong ? std::to_string(position) + ": " + text.text() : text.text(), row.explanation)
            << row.pattern;
    }
}

TEST(TitleFormatLanguage, KeepsTheScriptOfAFailedCompilation) {
    TitleFormatting compiler;
    TitleFormatScript* script = nullptr;
    ASSERT_TRUE(compiler.compile(script, "%title%"));
    TitleFormatScript* const first = script;
    EXPECT_FALSE(compiler.compile(script, "%title"));
    EXPECT_EQ(script, first);
    EXPECT_EQ(script->add_ref(), 2U);
    ASSERT_TRUE(compiler.compile(script, "%artist%"));
    EXPECT_NE(script, first);
    EXPECT_EQ(first->release(), 0U);
    EXPECT_EQ(script->release(), 0U);
}

TEST(TitleFormatLanguage, RunsOneProgramOnSeveralThreads) {
    const auto compiled =
        compile_title_format("$upper(%title%) $map(%artist%,$rreplace(%_loop_value%,'(.)$','\\1!')) "
                             "$ascii(%album%) $transliterate(%album%,Greek-Latin)");
    const auto& program = std::get<Ref<TitleFormatProgram>>(compiled);
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < results.size(); ++i)
        threads.emplace_back([&program, &result = results[i], i] {
            SampleTrack track(two_artists());
            track.tags.set_field("ALBUM", ("\xCE\xA9 " + std::to_string(i)).c_str());
            StringSink out;
            for (int round = 0; round < 50; ++round)
                program->run(track, track.tags, nullptr, out, nullptr);
            result = out.text();
        });
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t i = 0; i < results.size(); ++i)
        EXPECT_EQ(results[i], "ROPE Osk!, Mara! O " + std::to_string(i) + " \xC5\x8C " + std::to_string(i));
}

} // namespace
} // namespace vantaro::core
