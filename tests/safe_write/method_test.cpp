// How a file takes on its new bytes, and that it keeps what is no content.

#include "host/api/exceptions.h"
#include "tests/support/temporary_folder.h"
#include "vantaro/safe_write/prepare.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <sys/xattr.h>

namespace vantaro::core {
namespace {

constexpr std::size_t block = 4096;

/// Bytes that differ from place to place.
std::string pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 31 >> 4);
    return bytes;
}

class MethodTest : public testing::Test {
protected:
    struct Outcome {
        WriteMethod method{};
        std::string bytes;
    };

    OpenFile open(const std::string& bytes) {
        return OpenFile::open_for_change(real_system_calls(), folder.write("a", bytes));
    }
    PreparedChange prepare(OpenFile file, std::vector<Splice> splices, const ChangeOptions& options = {}) {
        const std::uint64_t size = file.identity().size;
        return prepare_change(std::move(file), {size, std::move(splices)}, options, names);
    }
    Outcome change(const std::string& bytes, std::vector<Splice> splices) {
        PreparedChange prepared = prepare(open(bytes), std::move(splices));
        EXPECT_EQ(folder.read("a"), bytes) << "touched while it was prepared";
        const FileIdentity now = apply_change(prepared);
        EXPECT_EQ(now, FileIdentity::of(folder.path("a")));
        return {prepared.change.method, folder.read("a")};
    }
    bool shifts() const {
        struct statfs system;
        return ::statfs(folder.path().c_str(), &system) == 0 && system.f_type == EXT4_SUPER_MAGIC
               && system.f_bsize == block;
    }

    test::TemporaryFolder folder;
    TemporaryNames names{[](const std::string& where) { return where + "/temporary"; },
                         [](const std::string&) {}};
};

TEST_F(MethodTest, IsTheCheapestThatFits) {
    const std::string old_bytes = pattern(40 * block + 100);
    const std::size_t size = old_bytes.size();
    const WriteMethod by_blocks = shifts() ? WriteMethod::shift : WriteMethod::replace;
    struct Row {
        const char* name;
        Splice splice;
        WriteMethod method;
    };
    const Row rows[] = {
        {"same length", {10, 5, "HELLO"}, WriteMethod::in_place},
        {"longer end", {size - 100, 100, std::string(5000, 'e')}, WriteMethod::in_place},
        {"shorter end", {size - 5000, 5000, "e"}, WriteMethod::in_place},
        {"appended", {size, 0, "e"}, WriteMethod::in_place},
        {"a byte more", {10, 5, "HELLO!"}, WriteMethod::replace},
        {"a byte less", {10, 5, "HELL"}, WriteMethod::replace},
        {"a block more", {10, 5, std::string(5 + block, 'n')}, by_blocks},
        {"two blocks more behind the first",
         {2 * block + 7, 100, std::string(100 + 2 * block, 'n')},
         by_blocks},
        {"two blocks less", {100, 3 * block, std::string(block, 'n')}, by_blocks},
        {"a block less within the first two", {100, block, ""}, by_blocks},
        {"a block less, all of it", {0, block, ""}, by_blocks},
        {"most of the file", {0, 30 * block, std::string(30 * block, 'n')}, WriteMethod::replace},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Splice& splice = row.splice;
        const Outcome outcome = change(old_bytes, {splice});
        EXPECT_EQ(outcome.method, row.method);
        std::string expected = old_bytes;
        EXPECT_EQ(outcome.bytes, expected.replace(splice.offset, splice.size, splice.bytes));
    }
}

TEST_F(MethodTest, ShiftsTakeOtherChangesAlong) {
    const std::string old_bytes = pattern(40 * block);
    const std::vector<Splice> splices{{5, 1, "a"},
                                      {5000, 10, "b"},
                                      {5020, 1, std::string(10 + block, 'c')},
                                      {9000, 1, "d"},
                                      {39 * block, 2, "ee"}};
    std::string expected = old_bytes;
    for (auto splice = splices.rbegin(); splice != splices.rend(); ++splice)
        expected.replace(splice->offset, splice->size, splice->bytes);
    const Outcome outcome = change(old_bytes, splices);
    EXPECT_EQ(outcome.bytes, expected);
    EXPECT_EQ(outcome.method, shifts() ? WriteMethod::shift : WriteMethod::replace);
}

TEST_F(MethodTest, SeveralNamesKeepOneFile) {
    const std::string old_bytes = pattern(10000);
    folder.write("a", old_bytes);
    std::filesystem::create_hard_link(folder.path("a"), folder.path("b"));
    const Outcome outcome = change(old_bytes, {{10, 5, "longer than before"}});
    EXPECT_EQ(outcome.method, WriteMethod::in_place);
    EXPECT_EQ(folder.read("b"), outcome.bytes);
    EXPECT_EQ(outcome.bytes, std::string(old_bytes).replace(10, 5, "longer than before"));
}

TEST_F(MethodTest, AFolderThatTakesNoFilesIsNoObstacle) {
    const std::string old_bytes = pattern(10000);
    folder.write("a", old_bytes);
    folder.set_mode("a", 0666);
    folder.set_mode("", 0555);
    {
        const test::OrdinaryUser user;
        PreparedChange prepared =
            prepare(OpenFile::open_for_change(real_system_calls(), folder.path("a")), {{10, 5, "longer"}});
        EXPECT_EQ(prepared.change.method, WriteMethod::in_place);
        apply_change(prepared);
    }
    EXPECT_EQ(folder.read("a"), std::string(old_bytes).replace(10, 5, "longer"));
}

TEST_F(MethodTest, AReplacedFileKeepsItsAttributes) {
    folder.write("a", pattern(10000));
    const std::string path = folder.path("a");
    folder.set_mode("a", 0640);
    const std::string value("\0binary\xff", 8);
    const bool has_attributes = ::setxattr(path.c_str(), "user.note", value.data(), value.size(), 0) == 0;
    struct stat before;
    ASSERT_EQ(::stat(path.c_str(), &before), 0);
    ChangeOptions options;
    options.modified = 1'234'567'890'123'456'789;
    OpenFile file = OpenFile::open_for_change(real_system_calls(), path);
    PreparedChange prepared = prepare(std::move(file), {{10, 5, "longer"}}, options);
    EXPECT_EQ(prepared.change.method, WriteMethod::replace);
    apply_change(prepared);
    struct stat after;
    ASSERT_EQ(::stat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(FileIdentity::of(after).modified, 1'234'567'890'123'456'789);
    if (has_attributes) {
        std::string kept(100, '\0');
        kept.resize(static_cast<std::size_t>(
            std::max<ssize_t>(0, ::getxattr(path.c_str(), "user.note", kept.data(), kept.size()))));
        EXPECT_EQ(kept, value);
    }
}

TEST_F(MethodTest, AFileThatSomebodyChangesMeanwhileIsLeftAlone) {
    for (const char* bytes : {"HELLO", "longer"}) {
        PreparedChange prepared = prepare(open(pattern(10000)), {{10, 5, bytes}});
        folder.write("a", "somebody else's");
        EXPECT_THROW(apply_change(prepared), vantaro_io::exception_io);
        EXPECT_EQ(folder.read("a"), "somebody else's");
    }
    // Another file under the same name.
    PreparedChange prepared = prepare(open(pattern(10000)), {{10, 5, "HELLO"}});
    std::filesystem::rename(folder.path("a"), folder.path("b"));
    folder.write("a", pattern(10000));
    EXPECT_THROW(apply_change(prepared), vantaro_io::exception_io);
    EXPECT_EQ(folder.read("a"), pattern(10000));
    EXPECT_EQ(folder.read("b"), pattern(10000));
}

} // namespace
} // namespace vantaro::core
