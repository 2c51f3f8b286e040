// How a file takes on its new bytes, and that it keeps what is no content.

#include "host/api/exceptions.h"
#include "tests/support/made_bytes.h"
#include "tests/support/made_file_system.h"
#include "tests/support/temporary_folder.h"
#include "vantaro/safe_write/prepare.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>

namespace vantaro::core {
namespace {

using test::pattern;

constexpr std::size_t block = 4096;

class MethodTest : public testing::Test {
protected:
    struct Outcome {
        WriteMethod method{};
        std::string bytes;
    };

    OpenFile open(const std::string& bytes) {
        return OpenFile::open_for_change(test::common_system(), folder.write("a", bytes));
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
    test::TemporaryFolder folder;
    TemporaryNames names{[](const std::string& where) { return where + "/temporary"; },
                         [](const std::string&) {}};
};

TEST_F(MethodTest, IsTheCheapestThatFits) {
    const std::string old_bytes = pattern(40 * block + 100);
    const std::size_t size = old_bytes.size();
    const WriteMethod by_blocks = test::common_traits().shifts ? WriteMethod::shift : WriteMethod::replace;
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
    EXPECT_EQ(outcome.method, test::common_traits().shifts ? WriteMethod::shift : WriteMethod::replace);
}

TEST_F(MethodTest, FitsTheFileSystem) {
    struct Row {
        const char* name;
        FileSystemTraits traits;
        WriteMethod method;
    };
    const Row rows[] = {
        {"a network share", {.replaces_safely = false, .never_replaces = true}, WriteMethod::in_place},
        {"no journal", {.replaces_safely = false, .without_order = true}, WriteMethod::in_place},
        {"another host", {.is_remote = true}, WriteMethod::replace},
        {"as most", {}, WriteMethod::replace},
    };
    const std::string old_bytes = pattern(10 * block);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        test::MadeFileSystem calls(row.traits);
        PreparedChange prepared = prepare(OpenFile::open_for_change(calls, folder.write("a", old_bytes)),
                                          {{10, 5, std::string(5 + block, 'n')}, {9000, 1, "x"}});
        EXPECT_EQ(prepared.change.method, row.method);
        apply_change(prepared);
        EXPECT_EQ(folder.read("a"),
                  std::string(old_bytes).replace(9000, 1, "x").replace(10, 5, std::string(5 + block, 'n')));
    }
}

TEST_F(MethodTest, WhatIsTooLargeToNoteIsReplacedWhereThatIsPossible) {
    const std::uint64_t large = std::uint64_t{300} << 20; // sparse
    for (const bool is_share : {false, true}) {
        test::MadeFileSystem calls(
            {.replaces_safely = false, .never_replaces = is_share, .without_order = true});
        std::filesystem::resize_file(folder.write("a", "head"), large);
        OpenFile file = OpenFile::open_for_change(calls, folder.path("a"));
        if (is_share) {
            EXPECT_THROW(prepare(std::move(file), {{0, 4, "longer"}}), vantaro_io::exception_io);
            EXPECT_EQ(std::filesystem::file_size(folder.path("a")), large);
        } else {
            EXPECT_EQ(prepare(std::move(file), {{0, 4, "longer"}}).change.method, WriteMethod::replace);
        }
    }
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
            prepare(OpenFile::open_for_change(test::common_system(), folder.path("a")), {{10, 5, "longer"}});
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
    OpenFile file = OpenFile::open_for_change(test::common_system(), path);
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

TEST_F(MethodTest, AReplacedFileKeepsItsFlags) {
    const auto flags_of = [&](const std::string& path) {
        const OpenFile file = OpenFile::open(test::common_system(), path, O_RDONLY);
        int flags = 0;
        return ::ioctl(file.descriptor(), FS_IOC_GETFLAGS, &flags) == 0 ? flags : -1;
    };
    const auto set_flags = [&](const std::string& path, int flags) {
        const OpenFile file = OpenFile::open(test::common_system(), path, O_RDONLY);
        return ::ioctl(file.descriptor(), FS_IOC_SETFLAGS, &flags) == 0;
    };
    const std::string path = folder.write("a", pattern(10000));
    const int own_flags = flags_of(path);
    if (own_flags < 0 || !set_flags(path, own_flags | FS_NODUMP_FL | FS_NOATIME_FL))
        GTEST_SKIP() << "files have no flags here";
    const int with_flags = flags_of(path);
    const auto replace = [&](const std::string& bytes) {
        PreparedChange prepared =
            prepare(OpenFile::open_for_change(test::common_system(), path), {{10, 5, bytes}});
        EXPECT_EQ(prepared.change.method, WriteMethod::replace);
        apply_change(prepared);
        return flags_of(path);
    };
    EXPECT_EQ(replace("longer"), with_flags);
    // New files of the folder have flags that this one has not.
    ASSERT_TRUE(set_flags(path, own_flags));
    ASSERT_TRUE(set_flags(folder.path(""), flags_of(folder.path("")) | FS_NODUMP_FL));
    EXPECT_EQ(replace("shorter now"), own_flags);
}

/// Stands in for a file system in user space that takes such a call for done and does nothing.
std::atomic<bool> ignores_times_left_out = false;

TEST_F(MethodTest, ATimeIsSetWhereOneAloneCannotBe) {
    const OpenFile file = open("bytes");
    const timespec accessed = {1'000'000'000, 5};
    const timespec times[2] = {accessed, {1'000'000'000, 6}};
    ASSERT_EQ(::futimens(file.descriptor(), times), 0);
    ignores_times_left_out = true;
    file.set_modified(1'234'567'890'123'456'789);
    ignores_times_left_out = false;
    EXPECT_EQ(file.identity().modified, 1'234'567'890'123'456'789);
    EXPECT_EQ(file.status().st_atim.tv_sec, accessed.tv_sec);
    EXPECT_EQ(file.status().st_atim.tv_nsec, accessed.tv_nsec);
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

/// In the place of the C library's.
extern "C" int futimens(int file, const timespec times[2]) noexcept {
    const bool leaves_one_out = times[0].tv_nsec == UTIME_OMIT || times[1].tv_nsec == UTIME_OMIT;
    if (vantaro::core::ignores_times_left_out && leaves_one_out)
        return 0;
    return static_cast<int>(::syscall(SYS_utimensat, file, nullptr, times, 0));
}
