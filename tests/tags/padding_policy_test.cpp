#include "vantaro/tags/padding.h"

#include <gtest/gtest.h>

namespace vantaro::core::tags {
namespace {

struct Row {
    const char* name;
    std::size_t needed;
    std::size_t room;
    PaddingForm form;
    std::size_t size;
};

class PaddedSize : public testing::TestWithParam<Row> {};

TEST_P(PaddedSize, FollowsThePolicy) {
    const Row& row = GetParam();
    EXPECT_EQ(padded_size(row.needed, row.room, row.form), row.size);
}

INSTANTIATE_TEST_SUITE_P(
    , PaddedSize,
    testing::Values(Row{"NewTag", 100, 0, {}, 4096}, Row{"NewTagWithLeastPadding", 3072, 0, {}, 4096},
                    Row{"NewTagWithoutLeastPadding", 3073, 0, {}, 8192}, Row{"Shrinks", 10, 70001, {}, 70001},
                    Row{"FillsItsRoom", 500, 500, {.header = 4}, 500},
                    Row{"LeavesLessThanAHeader", 497, 500, {.header = 4}, 500 + 4096},
                    Row{"LeavesAHeader", 496, 500, {.header = 4}, 500},
                    Row{"Outgrows", 501, 500, {}, 500 + 4096},
                    Row{"HeaderIsNoPadding", 3072, 0, {.header = 8}, 8192},
                    Row{"OtherStep", 501, 500, {.step = 4080}, 500 + 4080},
                    Row{"LimitCutsPadding", 5000, 4096, {.limit = 6000}, 6000},
                    Row{"LimitLeavesLessThanAHeader", 5998, 4096, {.header = 4, .limit = 6000}, 5998},
                    Row{"FillsTheLimit", 6000, 4096, {.header = 4, .limit = 6000}, 6000},
                    Row{"AboveTheLimit", 6001, 4096, {.limit = 6000}, 6001},
                    Row{"RoomAboveTheLimit", 100, 7000, {.limit = 6000}, 6000}),
    [](const auto& row) { return row.param.name; });

} // namespace
} // namespace vantaro::core::tags
