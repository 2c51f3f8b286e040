// Taking runs back, step by step, and what is refused.

#include "tests/journal/run_fixture.h"

#include <fcntl.h>

namespace vantaro::core {
namespace {

using Errors = std::map<std::string, std::string>;

class UndoTest : public test::RunTest {
protected:
    std::uint64_t newest() const { return store().runs().front().number; }
    std::int64_t modified(const std::string& name) const {
        return FileIdentity::of(folder.path(name)).modified;
    }
};

TEST_F(UndoTest, RunsComeOffStepByStepAndOnAgain) {
    const std::string first = test::pattern(20000);
    folder.write("a", first);
    run({{"a", {{10, 5, "longer than before"}}}});
    const std::string second = folder.read("a");
    const std::int64_t second_time = modified("a");
    run({{"a", {{100, 50, ""}, {5000, 3, "xyz"}}}});
    const std::string third = folder.read("a");
    ASSERT_NE(second, third);

    EXPECT_EQ(undo(1), (Errors{{"a", "Run 2 has changed the file since; it was left alone"}}));
    EXPECT_EQ(folder.read("a"), third);
    EXPECT_EQ(undo(2), Errors());
    EXPECT_EQ(folder.read("a"), second);
    EXPECT_NE(modified("a"), second_time);
    EXPECT_EQ(undo(1), Errors());
    EXPECT_EQ(folder.read("a"), first);
    const std::uint64_t undo_of_first = newest();
    EXPECT_EQ(store().runs().front().start.undoes, 1U);
    EXPECT_EQ(undo(undo_of_first), Errors());
    EXPECT_EQ(folder.read("a"), second);
    EXPECT_EQ(undo(undo_of_first - 1), Errors()); // the undo of the second run
    EXPECT_EQ(folder.read("a"), third);
    EXPECT_EQ(undo(newest(), true), Errors());
    EXPECT_EQ(folder.read("a"), second);
}

TEST_F(UndoTest, TimesComeBackWhereAsked) {
    for (const char* bytes : {"HELLO", "longer than before"}) {
        folder.write("a", test::pattern(20000));
        const std::int64_t long_ago = 1'000'000'000'123'456'789;
        OpenFile::open_for_change(real_system_calls(), folder.path("a")).set_modified(long_ago);
        run({{"a", {{10, 5, bytes}}}});
        EXPECT_NE(modified("a"), long_ago);
        EXPECT_EQ(undo(newest(), true), Errors());
        EXPECT_EQ(modified("a"), long_ago);
    }
}

TEST_F(UndoTest, RefusesWhatHasChangedSinceAndGoesOn) {
    RunTest::Edits edits;
    for (const char* name : {"changed", "gone", "plain", "same time", "turned"}) {
        folder.write(name, test::pattern(20000));
        edits[name] = {{10, 5, "HELLO"}};
    }
    run(edits);
    const auto overwrite = [&](const std::string& name, std::uint64_t place, const char* bytes) {
        const OpenFile file = OpenFile::open_for_change(real_system_calls(), folder.path(name));
        const std::int64_t time = file.identity().modified;
        file.write(place, bytes);
        file.set_modified(name == "same time" ? time : time + 1);
    };
    overwrite("changed", 9000, "by somebody else");
    overwrite("same time", 10, "JELLO");
    std::filesystem::remove(folder.path("gone"));
    std::filesystem::remove(folder.path("turned"));
    folder.make_folder("turned");
    const std::string changed = folder.read("changed");

    const Errors errors = undo(1);
    EXPECT_EQ(errors.size(), 4U);
    EXPECT_EQ(errors.at("gone"), "File not found");
    EXPECT_EQ(errors.at("changed"), "The file has changed since; it was left alone");
    EXPECT_EQ(errors.at("same time"), errors.at("changed"));
    EXPECT_EQ(folder.read("plain"), test::pattern(20000));
    EXPECT_EQ(folder.read("changed"), changed);
}

TEST_F(UndoTest, OnlyBytesTellWhetherAFileIsAsItWas) {
    // Whatever the times of the files say, as with programs, and file systems, that keep them.
    const std::string old_bytes = test::pattern(20000);
    const std::int64_t time = 1'000'000'000'000'000'000;
    struct Row {
        const char* name;
        std::vector<Splice> first;
        std::vector<Splice> second;
    };
    const Row rows[] = {
        {"the same place", {{10, 5, "HELLO"}}, {{10, 5, "JELLO"}}},
        {"another place", {{10, 5, "HELLO"}}, {{5000, 5, "HELLO"}}},
        {"another length", {{10, 5, "longer"}}, {{5000, 5, "HELLO"}}},
        {"back in length", {{10, 5, "longer"}}, {{100, 6, "short"}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove_all(folder.path("runs"));
        folder.write("a", old_bytes);
        const auto keep_time = [&] {
            OpenFile::open(test::common_system(), folder.path("a"), O_RDWR).set_modified(time);
        };
        keep_time();
        run({{"a", row.first}});
        keep_time();
        const std::string first = folder.read("a");
        run({{"a", row.second}});
        keep_time();
        const std::string second = folder.read("a");
        EXPECT_EQ(undo(1), (Errors{{"a", "Run 2 has changed the file since; it was left alone"}}));
        EXPECT_EQ(folder.read("a"), second);
        EXPECT_EQ(undo(2), Errors());
        EXPECT_EQ(folder.read("a"), first);
        // A new time is no change.
        OpenFile::open(test::common_system(), folder.path("a"), O_RDWR).set_modified(time + 5);
        EXPECT_EQ(undo(1), Errors());
        EXPECT_EQ(folder.read("a"), old_bytes);
        // By hand, into what the second run made: no run of the store did that.
        folder.write("a", second);
        keep_time();
        EXPECT_EQ(undo(1), (Errors{{"a", "The file has changed since; it was left alone"}}));
        EXPECT_EQ(folder.read("a"), second);
    }
}

TEST_F(UndoTest, APictureThatMovesTakesNoRoom) {
    const std::string picture = test::noise(300'000);
    const std::string old_bytes = "title" + picture + std::string(1000, '\0') + test::noise(2'000'000);
    // Within the padding, and with more than the padding holds.
    for (const std::string& title : {std::string("longer title"), std::string(3000, 't')}) {
        folder.write("a", old_bytes);
        const std::size_t padding = title.size() > 1000 ? 0 : 1005 - title.size();
        run({{"a", {{0, 301'005, title + picture + std::string(padding, '\0')}}}});
        const std::string new_bytes = folder.read("a");
        EXPECT_TRUE(new_bytes.starts_with(title));
        EXPECT_LT(store().runs().front().bytes, 5000U);
        EXPECT_EQ(undo(newest()), Errors());
        EXPECT_TRUE(folder.read("a") == old_bytes);
        EXPECT_LT(store().runs().front().bytes, 5000U);
        EXPECT_EQ(undo(newest()), Errors());
        EXPECT_TRUE(folder.read("a") == new_bytes);
    }
}

TEST_F(UndoTest, SeveralChangesOfOneFileInARun) {
    const std::string old_bytes = test::pattern(20000);
    folder.write("a", old_bytes);
    RunStore runs = store();
    {
        RunWriter writer(runs, {1, "test", 0});
        for (const std::string bytes : {"one", "fourteen bytes", "x"}) {
            OpenFile file = OpenFile::open_for_change(runs.calls(), folder.path("a"));
            const FileEdit edit{file.identity().size, {{10, 5, bytes}}};
            writer.submit(writer.prepare(std::move(file), edit, {}), [](const WrittenFile&) {});
            writer.wait();
        }
        EXPECT_EQ(writer.finish(), 1U);
    }
    EXPECT_NE(folder.read("a"), old_bytes);
    EXPECT_EQ(undo(1), Errors());
    EXPECT_EQ(folder.read("a"), old_bytes);
    EXPECT_EQ(undo(2), Errors());
    EXPECT_EQ(undo(3), Errors());
    EXPECT_EQ(folder.read("a"), old_bytes);
}

TEST_F(UndoTest, TwoNamesOfOneFileInARun) {
    const std::string old_bytes = test::pattern(20000);
    folder.write("a", old_bytes);
    std::filesystem::create_hard_link(folder.path("a"), folder.path("b"));
    RunStore runs = store();
    for (const bool is_cut_off : {false, true}) {
        const std::uint64_t number = runs.runs().empty() ? 1 : newest() + 1;
        {
            RunWriter writer(runs, {1, "test", 0});
            // There and back again: the first change then looks as if it had never been made.
            for (const auto& [name, bytes] : {std::pair("a", "HELLO"), std::pair("b", "again")}) {
                OpenFile file = OpenFile::open_for_change(runs.calls(), folder.path(name));
                const std::string wanted =
                    is_cut_off && std::string(name) == "b" ? old_bytes.substr(10, 5) : bytes;
                const FileEdit edit{file.identity().size, {{10, 5, wanted}}};
                writer.submit(writer.prepare(std::move(file), edit, {}), [](const WrittenFile&) {});
                writer.wait();
            }
            EXPECT_EQ(writer.finish(), number);
        }
        if (is_cut_off) {
            cut_off(number);
            recover();
        }
        EXPECT_EQ(undo(number), Errors());
        EXPECT_EQ(folder.read("b"), old_bytes);
        EXPECT_EQ(undo(newest()), Errors());
        EXPECT_EQ(undo(newest()), Errors());
        EXPECT_EQ(folder.read("a"), old_bytes);
    }
}

TEST_F(UndoTest, WhatIsBackAlreadyIsNoFailure) {
    for (const char* name : {"a", "b"})
        folder.write(name, test::pattern(20000));
    run({{"a", {{10, 5, "HELLO"}}}, {"b", {{10, 5, "longer"}}}});
    std::filesystem::rename(folder.path("b"), folder.path("elsewhere"));
    EXPECT_EQ(undo(1).size(), 1U);
    std::filesystem::rename(folder.path("elsewhere"), folder.path("b"));
    EXPECT_EQ(undo(1), Errors());
    for (const char* name : {"a", "b"})
        EXPECT_EQ(folder.read(name), test::pattern(20000));
}

TEST_F(UndoTest, NothingChangedIsNoRun) {
    folder.write("a", "text");
    RunStore runs = store();
    RunWriter writer(runs, {1, "test", 0});
    EXPECT_EQ(writer.finish(), 0U);
    EXPECT_TRUE(runs.runs().empty());
    EXPECT_THROW(undo(1), vantaro_io::exception_io_not_found);
}

TEST(NewestRunToUndo, PassesOverUndosAndWhatTheyTookBack) {
    struct Row {
        const char* what;
        /// Newest first: number, what it undoes, whether it is open.
        std::vector<std::tuple<std::uint64_t, std::uint64_t, bool>> runs;
        std::uint64_t expected;
    };
    const Row rows[] = {
        {"none", {}, 0},
        {"the newest", {{2, 0, false}, {1, 0, false}}, 2},
        {"one is under way", {{2, 0, true}, {1, 0, false}}, 1},
        {"undone", {{3, 2, false}, {2, 0, false}, {1, 0, false}}, 1},
        {"both undone", {{4, 1, false}, {3, 2, false}, {2, 0, false}, {1, 0, false}}, 0},
        {"an undo that was undone", {{4, 3, false}, {3, 2, false}, {2, 0, false}}, 2},
    };
    for (const Row& row : rows) {
        std::vector<RunSummary> runs;
        for (const auto& [number, undoes, is_open] : row.runs) {
            RunSummary& run = runs.emplace_back();
            run.number = number;
            run.start.undoes = undoes;
            run.is_open = is_open;
        }
        const auto found = newest_run_to_undo(runs);
        EXPECT_EQ(found ? found->number : 0, row.expected) << row.what;
    }
}

} // namespace
} // namespace vantaro::core
