#include "host/shared/text.h"

#include "tests/support/short_forms.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quorvex {
namespace {

TEST(Text, SortsListsByTheAlphabet) {
    const std::vector<std::string> sorted{"",     "[last used]", "2",          "10",
                                          "a",    "A",           "\u00C9dith", "Eno",
                                          "\xFF", "Script 2",    "script 10",  "Zappa"};
    // Bytes that are no text have a place of their own, too.
    for (const std::string& a : sorted)
        for (const std::string& b : sorted) {
            EXPECT_EQ(compare_alphabetical(a, b) == 0, a == b);
            EXPECT_EQ(compare_alphabetical(a, b) < 0, compare_alphabetical(b, a) > 0);
            if (a != "\xFF" && b != "\xFF") {
                EXPECT_EQ(compare_alphabetical(a, b) < 0, &a < &b) << a << " | " << b;
            }
        }
}

using vantaro::test::repeat;

int sign(int number) {
    return (number > 0) - (number < 0);
}

TEST(Comparison, OrdersByLowerCaseCodePoints) {
    // The lines ascend; the texts of a line are equal. Deseret letters are not folded.
    const char* const lines[] = {"[",          "A a",           "aa AA",         "a\u00E9 A\u00C9",
                                 "z",          "\u00E4 \u00C4", "\u044F \u042F", "\uFFFD",
                                 "\U00010400", "\U00010428",    "\U0010FFFF",    "\x80",
                                 "\xC3",       "\xC3\xC3",      "\xED\xA0\x80",  "\xFF"};
    std::vector<std::pair<int, std::string>> texts{{-1, ""}};
    for (int number = 0; const char* line : lines) {
        std::istringstream words(line);
        for (std::string word; words >> word;)
            texts.emplace_back(number, word);
        ++number;
    }
    for (const auto& [i, a] : texts)
        for (const auto& [j, b] : texts) {
            EXPECT_EQ(sign(stricmp_utf8(a.c_str(), b.c_str())), sign(i - j)) << i << " " << j;
            EXPECT_EQ(sign(stricmp_utf8_ex(a.data(), a.size(), b.data(), b.size())), sign(i - j))
                << i << " " << j;
        }
    EXPECT_LT(stricmp_utf8_ex("a\0b", 3, "A\0C", 3), 0) << "lengths count, not NUL bytes";
    EXPECT_EQ(stricmp_utf8_ex("ab", 1, "ac", 1), 0);
    EXPECT_NE(stricmp_utf8_ex("\u00E9", 1, "\u00E9", 2), 0) << "the length cuts the character";
}

TEST(Comparison, OfBeginnings) {
    const struct {
        const char* text;
        const char* prefix;
        int sign;
    } rows[] = {{"/TAG:x", "/tag:", 0}, {"/tag", "/tag:", -1}, {"x", "", 0},
                {"", "a", -1},          {"b", "ab", 1},        {"\u00C9x", "\u00E9", 0},
                {"\xC3", "\u00E9", 1},  {"\xFFx", "\xFF", 0}};
    for (const auto& row : rows)
        EXPECT_EQ(sign(stricmp_utf8_partial(row.text, row.prefix)), row.sign)
            << row.text << " " << row.prefix;
}

TEST(CaseMapping, OfCharactersAndTexts) {
    std::u32string text = U"AZ[@\u00C4\u00D7\u1E9E\uFFFF\U00010400";
    std::ranges::transform(text, text.begin(), uCharLower);
    EXPECT_EQ(text, U"az[@\u00E4\u00D7\u00DF\uFFFF\U00010400");
    EXPECT_EQ(uCharLower(invalid_byte_base + 'A'), invalid_byte_base + 'A');
    std::string out = "> ";
    uAddStringUpper(out, "stra\u00DFe \u00E9");
    uAddStringLower(out, " STRA\u00DFE \u00C9");
    uReplaceCharAdd(out, " a/b/", '/', '_');
    EXPECT_EQ(out, "> STRASSE \u00C9 stra\u00DFe \u00E9 a_b_");
}

TEST(Shortening, CountsCharactersAndCutsAtLineBreaks) {
    EXPECT_EQ(limit_text("", 1), "");
    EXPECT_EQ(limit_text("", 0), " (...)");
    for (const char* character : {"a", "\u00E9", "\U0001F3B5", "\xFF"}) {
        EXPECT_EQ(limit_text(repeat(character, 49), 50), repeat(character, 49));
        EXPECT_EQ(limit_text(repeat(character, 50), 50), repeat(character, 50) + " (...)");
        EXPECT_EQ(limit_text(repeat(character, 51), 50), repeat(character, 50) + " (...)");
    }
    EXPECT_EQ(first_line("a b"), "a b");
    EXPECT_EQ(first_line("\r"), " (...)");
    for (const char* text : {"a\nb", "a\r\nb", "a\rb\n", "a\n"})
        EXPECT_EQ(first_line(text), "a (...)");
}

} // namespace
} // namespace quorvex
