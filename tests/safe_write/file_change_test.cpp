// What is told of a file whose change may have been cut off, by its bytes.

#include "tests/support/made_bytes.h"
#include "tests/support/made_file_system.h"
#include "tests/support/temporary_folder.h"
#include "vantaro/safe_write/file_change.h"

#include <gtest/gtest.h>

#include <fcntl.h>

namespace vantaro::core {
namespace {

using test::pattern;

constexpr std::size_t block = 4096;

std::string replaced(std::string bytes, std::uint64_t place, const std::string& by) {
    return bytes.replace(place, by.size(), by);
}

class FileChangeTest : public testing::Test {
protected:
    FileChange describe(const std::vector<Splice>& splices) const {
        const OpenFile file = OpenFile::open(test::common_system(), folder.write("a", old_bytes), O_RDONLY);
        return describe_change(file, {old_bytes.size(), splices, {{0, old_bytes.size()}}});
    }
    FileState state(const FileChange& change, const std::string& bytes, bool is_without_order) const {
        test::MadeFileSystem calls({.without_order = is_without_order});
        return examine(OpenFile::open(calls, folder.write("a", bytes), O_RDONLY), change);
    }

    const std::string old_bytes = pattern(4 * block);
    test::TemporaryFolder folder;
};

TEST_F(FileChangeTest, OnlyWhatTheChangeMayHaveLeftIsBetween) {
    const std::uint64_t end = old_bytes.size();
    FileChange in_place = describe({{10, 5, "HELLO"}, {end - 4, 4, std::string(200, 'n')}});
    const FileChange cut = describe({{10, 5, "HELLO"}, {end - 3000, 3000, "end"}});
    const std::string kept_end = replaced(old_bytes, 10, "HELLO").substr(0, end - 3000) + "end";
    FileChange inserted = describe({{0, 15, old_bytes.substr(0, 10) + std::string(5 + block, 'n')}});
    inserted.method = WriteMethod::shift;
    inserted.shift_offset = 0;
    inserted.shift_size = block;
    FileChange removed = describe({{0, 15 + block, old_bytes.substr(0, 10) + "HELLO"}});
    removed.method = WriteMethod::shift;
    removed.shift_offset = 0;
    removed.shift_size = -static_cast<std::int64_t>(block);
    const std::string shifted = std::string(block, '\0') + old_bytes;
    struct Row {
        const char* name;
        const FileChange& change;
        std::string bytes;
        FileState state;
        FileState without_order;
    };
    constexpr FileState between = FileState::between;
    constexpr FileState foreign = FileState::foreign;
    const Row rows[] = {
        {"untouched", in_place, old_bytes, FileState::as_before, FileState::as_before},
        {"half a range", in_place, replaced(old_bytes, 10, "HEL"), between, between},
        {"a byte of somebody else", in_place, replaced(old_bytes, 10, "HEX"), foreign, foreign},
        {"a byte elsewhere", in_place, replaced(replaced(old_bytes, 10, "HEL"), 300, "x"), foreign, foreign},
        {"longer, by zeros", in_place, old_bytes + std::string(100, '\0'), between, between},
        {"longer, by what the disk had there", in_place, old_bytes + std::string(100, 'g'), foreign, between},
        {"too long", in_place, old_bytes + std::string(300, '\0'), foreign, foreign},
        {"empty", in_place, "", foreign, foreign},
        {"not yet shorter, and cleared", cut, kept_end + std::string(2997, '\0'), between, between},
        {"or another file's", cut, kept_end + std::string(2997, 'g'), foreign, between},
        {"shorter, and not yet written", cut, old_bytes.substr(0, end - 2997), between, between},
        {"blocks inserted", inserted, shifted, between, between},
        {"with what the disk had there", inserted, std::string(block, 'g') + old_bytes, foreign, between},
        {"and more than that", inserted, replaced(shifted, block + 300, "ggg"), foreign, foreign},
        {"the end overwritten", inserted, replaced(shifted, block + 12, "ggg"), foreign, foreign},
        {"blocks not yet removed", removed, replaced(old_bytes, block + 10, "HEL"), between, between},
        {"and another file has them", removed, replaced(old_bytes, 100, "ggg"), foreign, between},
        {"blocks removed", removed, old_bytes.substr(block), between, between},
        {"and bytes of somebody else", removed, replaced(old_bytes.substr(block), 12, "ggg"), foreign,
         foreign},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(state(row.change, row.bytes, false), row.state) << row.name;
        EXPECT_EQ(state(row.change, row.bytes, true), row.without_order) << row.name;
    }
}

TEST_F(FileChangeTest, PartsThatStayAreFoundWhereTheyAreThen) {
    for (const std::vector<Splice>& splices :
         {std::vector<Splice>{{10, 5, "longer"}, {500, 100, ""}, {9000, 0, "new"}},
          std::vector<Splice>{{0, 5, ""}, {old_bytes.size(), 0, "end"}},
          std::vector<Splice>{{0, old_bytes.size(), "all"}}}) {
        const FileChange change = describe(splices);
        std::string new_bytes = old_bytes;
        for (auto splice = splices.rbegin(); splice != splices.rend(); ++splice)
            new_bytes.replace(splice->offset, splice->size, splice->bytes);
        EXPECT_EQ(state(change, new_bytes, false), FileState::as_changed);
        const OpenFile file = OpenFile::open(test::common_system(), folder.path("a"), O_RDONLY);
        EXPECT_TRUE(holds_kept_parts(file, change, true));
        // What takes it back is the same the other way round.
        FileChange back = describe_change(file, inverse_of(change));
        EXPECT_EQ(back.kept_checksum, change.kept_checksum);
        std::uint64_t kept = 0;
        for (const Extent& part : back.kept)
            kept += part.size;
        std::uint64_t changed = 0;
        for (const ChangedRange& range : back.ranges)
            changed += range.old_size;
        EXPECT_EQ(kept + changed, new_bytes.size());
    }
}

} // namespace
} // namespace vantaro::core
