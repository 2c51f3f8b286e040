#include "vantaro/storage/records.h"

#include "tests/storage/record_stream.h"

#include <gtest/gtest.h>

namespace vantaro::core {
namespace {

using test::record;
using test::stream;

TEST(Records, ReadsTheFraming) {
    const std::string long_value(70'000, 'v');
    const struct {
        std::string bytes;
        std::size_t records;
        std::size_t tail;
    } rows[] = {
        {"", 0, 0},
        {std::string(15, '\0'), 0, 15},
        {record("a", ""), 1, 0},
        {record("a", long_value) + record("b", "x") + "tail", 2, 4},
    };
    for (const auto& row : rows) {
        const auto records = parse_records(row.bytes);
        ASSERT_TRUE(records) << row.bytes.size();
        EXPECT_EQ(records->records.size(), row.records);
        EXPECT_EQ(records->tail.size(), row.tail);
    }
    EXPECT_EQ(parse_records(rows[3].bytes)->records[0].value, long_value);

    const std::string whole = record("a", "12345");
    for (std::size_t size = 16; size < whole.size(); ++size)
        EXPECT_FALSE(parse_records(whole.substr(0, size))) << size;
    EXPECT_FALSE(parse_records(std::string(16, 'g') + "\xFF\xFF\xFF\xFF" + "x"));
}

TEST(Records, MergesByVariable) {
    const struct {
        const char* base;
        const char* ours;
        const char* theirs;
        const char* merged;
        bool has_conflict;
    } rows[] = {
        {"", "a1 b2", "", "a1 b2", false},
        {"a1 b2", "a1 b2", "a1 b2", "a1 b2", false},
        {"a1 b1", "a2 b1", "a1 b2", "a2 b2", false}, // each changed another one
        {"a1 b1", "b1 a1", "a1 b2", "b2 a1", false}, // our order
        {"a1", "a2", "a2", "a2", false},             // the same change
        {"a1", "a2", "a3", "a2", true},
        {"", "a1", "a2", "a1", true}, // both made it
        {"a1", "a1 n1", "x1 a1 y1", "a1 n1 x1 y1", false},
        {"a1 x1", "a1", "a1 x1", "a1 x1", false},    // not ours to know
        {"a1 b1", "a1 b2", "", "a1 b2", false},      // the file is gone
        {"a1 a2", "a1 a3", "a4 a2", "a4 a3", false}, // several of one variable
        {"a1 a2", "a3", "a1 a2", "a3", false},       // of several, the last one is what was read
        {"a1 a2", "a2", "a1 a4", "a4", false},
        {"a", "a", "a1", "a1", false}, // an empty value is one
    };
    for (const auto& row : rows) {
        const std::string base = stream(row.base);
        const std::string ours = stream(row.ours) + "end";
        const std::string theirs = stream(row.theirs) + "?";
        const MergedRecords merged =
            merge_records(*parse_records(base), *parse_records(ours), *parse_records(theirs));
        EXPECT_EQ(merged.bytes, stream(row.merged) + "end")
            << row.base << " | " << row.ours << " | " << row.theirs;
        EXPECT_EQ(merged.has_conflict, row.has_conflict)
            << row.base << " | " << row.ours << " | " << row.theirs;
    }
}

TEST(Records, TellsWhatIsNewAndWhatToCompareWithNextTime) {
    const struct {
        const char* base;
        const char* ours;
        const char* theirs;
        const char* news;
        const char* next_base;
        bool has_surplus;
    } rows[] = {
        {"a1 b1", "a1 b1", "a1 b1", "", "a1 b1", false},
        {"a1 b1", "a2 b1", "a1 b2", "b2", "a1 b2", false}, // a is still a change of ours
        {"a1", "a2", "a3", "", "a1", false},               // and so is a conflict
        {"", "a2", "a3", "", "", false},
        {"a1", "a2", "a2", "", "a2", false},
        {"a1", "a1", "", "", "a1", false},
        {"x1", "a1", "x1 y1", "y1", "x1 y1", false}, // unknown ones are handed over once
        {"a1 a2", "a2", "a1 a2", "", "a2", true},
        {"a2", "a2", "a3 a4", "a4", "a4", true},
    };
    for (const auto& row : rows) {
        const std::string base = stream(row.base);
        const std::string ours = stream(row.ours);
        const std::string theirs = stream(row.theirs);
        const MergedRecords merged =
            merge_records(*parse_records(base), *parse_records(ours), *parse_records(theirs));
        const std::string shown = std::string(row.base) + " | " + row.ours + " | " + row.theirs;
        EXPECT_EQ(merged.news, stream(row.news)) << shown;
        EXPECT_EQ(merged.base, stream(row.next_base)) << shown;
        EXPECT_EQ(merged.has_surplus, row.has_surplus) << shown;
    }
}

} // namespace
} // namespace vantaro::core
