// File systems that lose the file which is to be replaced: the new bytes, or the old ones, are always there.

#include "tests/journal/run_fixture.h"

#include <gmock/gmock.h>

#include <atomic>

namespace vantaro::core {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

/// As the client of network shares does when the target of a rename is open somewhere: it removes the target
/// and refuses.
class ShareSystem final : public test::MadeFileSystem {
public:
    /// The first `refusals` renames onto a file fail.
    ShareSystem(const FileSystemTraits& traits, int refusals, bool has_unnamed_files)
        : MadeFileSystem(traits), refusals_(refusals), has_unnamed_files_(has_unnamed_files) {}

    int rename(const std::string& from, const std::string& to) override {
        if (from.find("/runs/") == std::string::npos && refusals_-- > 0) {
            std::filesystem::remove(to);
            errno = EACCES;
            return -1;
        }
        return SystemCalls::rename(from, to);
    }

protected:
    int fault(SystemCall call, std::size_t&) override {
        return call == SystemCall::create_unnamed && !has_unnamed_files_ ? EOPNOTSUPP : 0;
    }

private:
    std::atomic<int> refusals_;
    const bool has_unnamed_files_;
};

class ShareTest : public test::RunTest, public testing::WithParamInterface<bool> {
protected:
    ShareTest() {
        for (const char* name : {"music/a", "music/b", "music/c"}) {
            folder.write(name, old_bytes);
            edits[name] = {{10, 5, "longer than before"}};
        }
        new_bytes = test::edited(old_bytes, edits.begin()->second);
    }
    std::unique_ptr<ShareSystem> system(int refusals, const FileSystemTraits& traits = {}) const {
        return std::make_unique<ShareSystem>(traits, refusals, GetParam());
    }
    void expect_all(const std::string& bytes) const {
        EXPECT_EQ(names_in("music"), (std::vector<std::string>{"a", "b", "c"}));
        for (const auto& [name, splices] : edits)
            EXPECT_TRUE(folder.read(name) == bytes) << name;
    }

    const std::string old_bytes = test::pattern(20000);
    std::string new_bytes;
    Edits edits;
};

TEST_P(ShareTest, ATargetThatWentAwayIsPutBackAtOnce) {
    EXPECT_THAT(run(edits, *system(1)), IsEmpty());
    expect_all(new_bytes);
    EXPECT_THAT(undo(1, false, *system(1)), IsEmpty());
    expect_all(old_bytes);
}

TEST_P(ShareTest, WhatCouldNotBeRenamedIsKeptAndNamed) {
    const auto errors = run(edits, *system(2));
    ASSERT_EQ(errors.size(), 2U); // of the file, and of the run
    EXPECT_THAT(errors.at("music/a"), AllOf(HasSubstr("new content is kept as"), HasSubstr("/.vantaro-")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("music/a")));
    // As long as it goes on that way, nothing is removed.
    recover(*system(1));
    EXPECT_EQ(names_in("music").size(), 3U);
    EXPECT_TRUE(store().runs().front().is_open);
    recover();
    expect_all(new_bytes);
    EXPECT_THAT(undo(1), IsEmpty());
    expect_all(old_bytes);
}

TEST_P(ShareTest, NothingIsRemovedBesideAMissingFile) {
    // Deleted at last when whoever had it open closes it, after the new file was given up.
    const auto calls = system(0);
    RunStore runs = store(*calls);
    RunWriter writer(runs, {1, "test", 0});
    {
        OpenFile file = OpenFile::open_for_change(*calls, folder.path("music/a"));
        const FileEdit edit{file.identity().size, edits.at("music/a")};
        const PreparedChange prepared = writer.prepare(std::move(file), edit, {});
        std::filesystem::remove(folder.path("music/a"));
    }
    EXPECT_EQ(names_in("music").size(), GetParam() ? 2U : 3U) << "what has a name keeps it";
}

TEST_P(ShareTest, AnUndoKeepsItAsWell) {
    EXPECT_THAT(run(edits), IsEmpty());
    EXPECT_EQ(undo(1, false, *system(2)).size(), 1U);
    recover();
    expect_all(old_bytes);
}

TEST_P(ShareTest, KnownSharesAreWrittenInPlace) {
    const FileSystemTraits share{.replaces_safely = false, .never_replaces = true, .is_remote = true};
    EXPECT_THAT(run(edits, *system(1000, share)), IsEmpty());
    expect_all(new_bytes);
    EXPECT_THAT(undo(1, false, *system(1000, share)), IsEmpty());
    expect_all(old_bytes);
}

TEST_P(ShareTest, AFileThatLostItsBytesGetsThoseThatAreWhole) {
    // As a power failure leaves it where names reach the disk ahead of bytes: the new file under its first
    // name, and nothing under the other.
    run(edits, *system(2));
    folder.write("music/a");
    recover();
    expect_all(new_bytes);
}

TEST_P(ShareTest, WhatIsNotWholeIsLeftWhereItIs) {
    run(edits, *system(2));
    for (const std::string& name : names_in("music"))
        if (name.starts_with(".vantaro"))
            std::filesystem::resize_file(folder.path("music/" + name), 19000);
    const auto lines = recover();
    EXPECT_EQ(names_in("music").size(), 3U);
    EXPECT_THAT(lines, testing::Contains(HasSubstr("music/a")));
    EXPECT_THAT(undo(1), testing::Contains(testing::Key("a")));
    EXPECT_EQ(folder.read("music/b"), old_bytes);
}

INSTANTIATE_TEST_SUITE_P(Journal, ShareTest, testing::Bool(),
                         [](const auto& has) { return has.param ? "UnnamedFiles" : "NamedFiles"; });

} // namespace
} // namespace vantaro::core
