#include "vantaro/tags/tag_file.h"

#include <gtest/gtest.h>

namespace vantaro::core {
namespace {

struct Row {
    const char* name;
    std::vector<TrackField> before;
    std::vector<TrackField> after;
    std::vector<FieldChange> changes;
};

class FieldChanges : public testing::TestWithParam<Row> {};

TEST_P(FieldChanges, AreThoseThatDiffer) {
    EXPECT_EQ(field_changes(GetParam().before, GetParam().after), GetParam().changes);
}

INSTANTIATE_TEST_SUITE_P(
    Tags, FieldChanges,
    testing::Values(
        Row{"OrderAndCaseOfNames",
            {{"TITLE", {"a"}}, {"ARTIST", {"b", "c"}}},
            {{"artist", {"b", "c"}}, {"Title", {"a"}}},
            {}},
        Row{"OrderOfValues", {{"ARTIST", {"b", "c"}}}, {{"ARTIST", {"c", "b"}}}, {{"ARTIST", {"c", "b"}}}},
        Row{"CaseOfValues", {{"TITLE", {"a"}}}, {{"title", {"A"}}}, {{"title", {"A"}}}},
        Row{"OnlyAsciiLettersFold",
            {{"\xC3\xA4", {"x"}}},
            {{"\xC3\x84", {"x"}}},
            {{"\xC3\x84", {"x"}}, {"\xC3\xA4", {}}}},
        Row{"NewAndRemoved", {{"TITLE", {"a"}}}, {{"ALBUM", {""}}}, {{"ALBUM", {""}}, {"TITLE", {}}}},
        Row{"FieldsWithoutValuesAreNone", {{"TITLE", {}}}, {{"ALBUM", {}}}, {}},
        Row{"LastValueGone", {{"TITLE", {"a"}}}, {{"TITLE", {}}}, {{"TITLE", {}}}}),
    [](const auto& row) { return row.param.name; });

} // namespace
} // namespace vantaro::core
