// Patterns and values that are made to bring a program down.
#include "tests/titleformat/sample_track.h"
#include "vantaro/titleformat/function_table.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

namespace vantaro::core {
namespace {

using test::SampleTrack;

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

TrackInfoRecord large_values() {
    TrackInfoRecord tags;
    tags.set_field("BIG", repeated("a", 10'000'000).c_str());
    tags.set_field("WIDE", repeated("\xE6\xBC\xA2", 3'000'000).c_str());
    tags.set_field("MARKS", repeated("\xCC\x81\xCC\xA3", 2'000'000).c_str());
    tags.set_field("BAD", repeated("\xC3\xFF\xF0\x9F", 2'000'000).c_str());
    return tags;
}

TEST(TitleFormatBounds, DepthIsBounded) {
    SampleTrack track;
    const std::string too_deep =
        ": Functions, sections and parentheses stand in each other more than 200 deep";
    EXPECT_EQ(track.formatted(repeated("[", 200) + "%path%" + repeated("]", 200)), track.location);
    EXPECT_EQ(track.formatted(repeated("[", 201) + "%path%" + repeated("]", 201)), "ERROR 200" + too_deep);
    EXPECT_EQ(track.formatted(repeated("[", 100'000)), "ERROR 200" + too_deep);
    EXPECT_EQ(track.formatted(repeated("$upper(", 200) + "a" + repeated(")", 200)), "A");
    EXPECT_EQ(track.formatted(repeated("$upper(", 100'000)), "ERROR 1406" + too_deep);
    EXPECT_EQ(track.formatted("$upper(" + repeated("(", 100'000)), "ERROR 206" + too_deep);
    EXPECT_EQ(track.formatted(std::string("a\0b", 3)), "ERROR 1: The pattern holds a zero byte");
    EXPECT_EQ(track.formatted(repeated("a", title_format_text_limit)).size(), title_format_text_limit);
    EXPECT_EQ(track.formatted(repeated("a", title_format_text_limit + 1)),
              "ERROR 16777216: The pattern is longer than 16777216 bytes");
}

TEST(TitleFormatBounds, TextsAreBounded) {
    SampleTrack track(large_values());
    for (const char* pattern :
         {"$repeat(a,16777217)", "x$repeat(a,16777216)",
          "$repeat($repeat($repeat(aaaaaaaaaa,1000),1000),1000)", "$repeat(a,9223372036854775807)",
          "$pad(a,9223372036854775807)", "$padright(a,9223372036854775807)", "$num(1,9223372036854775807)",
          "%big%%big%", "$len(%big%%big%)", "$replace(%big%,a,bb)",
          "$rreplace($left(%big%,100000),a,$repeat(b,1000))", "$htmlescape(%wide%)",
          "$set(a,%big%)$set(b,%big%)", "$while(1,$set(%_loop_count%,$repeat(a,100000)))",
          "$map(%big%,$map(%big%,x))", "$lenmulti($splitmulti(%big%,a))"})
        EXPECT_EQ(track.formatted(pattern), title_format_text_too_long) << pattern;
    EXPECT_EQ(track.formatted("$len($repeat(a,16777216))"), "16777216");
}

TEST(TitleFormatBounds, WorkIsBounded) {
    SampleTrack track(large_values());
    const auto start = std::chrono::steady_clock::now();
    for (const char* pattern :
         {"$while(1,$while(1,$while(1,x)))", "$while(1,$while(1,$while(1,$len(%path%))))",
          "$while(1,$len(%big%))", "$while(1,$rmatch($left(%big%,40),'^(a+)+$|b'))",
          "$while(1,$rmatch($left(%big%,100),'(a*)*b'))",
          "$while(1,$transliterate(a,Any-Latin)$transliterate(a,Any-Hex))", "$trim(%big%,$repeat(b,10000)a)",
          "$replaceword($left(%big%,1000000),$left(%big%,1000),b)", "$ascii(%wide%)", "$format(%big%)"})
        EXPECT_EQ(track.formatted(pattern), title_format_too_much_work) << pattern;
    // Far more than it takes, and far less than what it would take without bounds, even with sanitizers.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(TitleFormatBounds, LargeTextsTakeLinearTime) {
    SampleTrack track(large_values());
    const struct {
        const char* pattern;
        const char* result;
    } rows[] = {
        {"$find($left(%big%,4000000),$left(%big%,2000000)b)", ""},
        {"$containsfold($left(%big%,4000000),$left(%big%,2000000)b)", ""},
        {"$count($left(%big%,6000000),$left(%big%,1000000))", "6"},
        {"$len($noaccents(%marks%))", "4000000"},
        {"$len($upper(%bad%))$len($caps(%bad%))", "80000008000000"},
        {"$len($titlecase($repeat(a ,3000000)))", "6000000"},
        {"$collapse($repeat( ,5000000))", ""},
        {"$len($colons($repeat(': ',2000000)))", "6000000"},
        {"$len($bracketed($repeat('(',3000000)$repeat(')',3000000)))", "5999998"},
        {"$lenmulti($guests($repeat('feat.  ',1000000)))", "1"},
        {"$len($sortmulti($splitmulti($repeat($left(%big%,1000)\x01,2000),\x01)))", "2004000"},
        {"$rmatch($left(%big%,2000000),'[a]*b')$rmatch($left(%big%,2000000),'(a+)+b')", ""},
        {"$hasformat($repeat('%a%b',100000),%big%)", ""},
        {"$len($fromtext($left(%big%,4000000),$repeat('%1a',2000000),$repeat('%1',2000000)))", "2000000"},
    };
    const auto start = std::chrono::steady_clock::now();
    for (const auto& row : rows)
        EXPECT_EQ(track.formatted(row.pattern).substr(0, 40), row.result) << row.pattern;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

/// Patterns by chance: every function, with arguments that it was not made for.
class RandomPattern {
public:
    explicit RandomPattern(std::uint32_t seed) : random_(seed) {}

    std::string next(int depth) {
        static constexpr std::string_view leaves[] = {"",
                                                      "0",
                                                      "-1",
                                                      "99999999999999999999",
                                                      "9223372036854775807",
                                                      "-9223372036854775808",
                                                      "1.5",
                                                      "a b",
                                                      "%artist%",
                                                      "%title%",
                                                      "%bad%",
                                                      "%nope%",
                                                      "'(a|b)*c'",
                                                      "'\\1$2'",
                                                      "'['",
                                                      "\xC3",
                                                      "\xED\xA0\x80",
                                                      "\xF0\x9F\x8E\xB5",
                                                      "'%1 - %2'",
                                                      "'%Y%9999d'",
                                                      "%_loop_value%",
                                                      "%path%",
                                                      "%length%",
                                                      "2024-02-30",
                                                      "UTF-8",
                                                      "' '",
                                                      "','",
                                                      "'; '",
                                                      "'$upper(x)'",
                                                      "300"};
        if (depth == 0 || below(5) == 0)
            return std::string(leaves[below(std::size(leaves))]);
        if (below(6) == 0)
            return "[" + next(depth - 1) + next(depth - 1) + "]";
        const FunctionRow& row = function_rows()[below(function_rows().size())];
        const std::size_t most = row.most == any_number ? row.least + 3U : row.most;
        const std::size_t count = row.least + below(most - row.least + 1);
        std::string text = "$" + std::string(row.name) + "(";
        for (std::size_t i = 0; i < count; ++i)
            text += (i > 0 ? "," : "") + next(depth - 1);
        // Nothing between the parentheses is no argument.
        return text.ends_with('(') && count > 0 ? text + "x)" : text + ")";
    }
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

private:
    std::mt19937 random_;
};

TEST(TitleFormatBounds, NoFunctionFailsOnUnusualArguments) {
    SampleTrack track;
    track.tags.set_field("TITLE", "Rope (feat. Osk & Mara)");
    track.tags.add_value("ARTIST", "The Tide");
    track.tags.add_value("ARTIST", "");
    track.tags.set_field("BAD", "\xC3\xFF\xF0\x9F(\x80");
    RandomPattern patterns(1);
    for (int i = 0; i < 6000; ++i) {
        const std::string pattern = patterns.next(3);
        const std::string result = track.formatted(pattern);
        EXPECT_FALSE(result.starts_with("ERROR ")) << pattern << '\n' << result;
        EXPECT_LE(result.size(), title_format_text_limit) << pattern;
    }
}

TEST(TitleFormatBounds, NoRubbishBringsTheCompilerDown) {
    static constexpr std::string_view pieces[] = {"$",       "(",    ")",   "[",    "]",  ",",    "'",
                                                  "%",       "//",   "\n",  "''",   "%%", "a",    "upper",
                                                  "$upper(", "$if(", "$f(", "\xC3", " ",  "$map("};
    SampleTrack track;
    RandomPattern choices(2);
    int compiled = 0;
    for (int i = 0; i < 20'000; ++i) {
        std::string pattern;
        for (std::size_t length = choices.below(12); length > 0; --length)
            pattern += pieces[choices.below(std::size(pieces))];
        const auto result = compile_title_format(pattern);
        if (const auto* error = std::get_if<TitleFormatError>(&result))
            EXPECT_LE(error->position, pattern.size()) << pattern;
        else
            ++compiled;
        track.formatted(pattern);
    }
    EXPECT_GT(compiled, 1000);
    EXPECT_LT(compiled, 19'000);
}

} // namespace
} // namespace vantaro::core
