// Other processes at the same files: two runs at once, and runs that are cut off beside this one.

#include "tests/journal/run_fixture.h"

#include "host/api/exceptions.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace vantaro::core {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Pair;

class OthersTest : public test::RunTest {
protected:
    OpenFile open(const std::string& name) const {
        return OpenFile::open_for_change(test::common_system(), folder.path(name));
    }
    FileEdit edit_of(const OpenFile& file, const std::vector<Splice>& splices) const {
        const std::uint64_t size = file.identity().size;
        return {size, splices, {{0, size}}};
    }
    /// Begins a change of a file in a process of its own, which is killed when it has written half of it.
    /// What it holds open is closed with `release`.
    void cut_off_half_way(const std::string& name, const std::vector<Splice>& splices) const {
        class HalfSystem final : public test::MadeFileSystem {
        public:
            HalfSystem() : MadeFileSystem({.replaces_safely = false, .never_replaces = true}) {}
            std::atomic<bool> is_touching = false;

        protected:
            int fault(SystemCall call, std::size_t& size) override {
                if (call == SystemCall::sync)
                    is_touching = true; // the journal is flushed, and the file comes next
                if (call == SystemCall::write && is_touching && size > 3) {
                    if (is_half_done_)
                        ::kill(::getpid(), SIGKILL);
                    is_half_done_ = true;
                    size /= 2;
                }
                return 0;
            }

        private:
            bool is_half_done_ = false;
        };
        const pid_t child = ::fork();
        if (child == 0) {
            HalfSystem calls;
            run({{name, splices}}, calls);
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
    }

    /// Makes an open journal one of files on another file system.
    void move_to_another_device(std::uint64_t number) const {
        const std::string path = folder.path("runs/0000000" + std::to_string(number) + ".open");
        std::vector<std::string> records;
        {
            const OpenFile file = open_journal(test::common_system(), path, O_RDONLY);
            JournalReader reader(file);
            while (const auto bytes = reader.next()) {
                Record record = decode(*bytes);
                if (auto* noted = std::get_if<NotedChange>(&record))
                    ++noted->change.before.device;
                records.push_back(encode(record));
            }
        }
        std::filesystem::remove(path);
        JournalFile::create(test::common_system(), path).append(records);
    }

    const std::string old_bytes = test::pattern(20000);
};

TEST_F(OthersTest, AFileIsOneWritersAtATime) {
    folder.write("a", old_bytes);
    {
        RunStore runs = store();
        RunWriter writer(runs, {1, "first", 0});
        OpenFile file = open("a");
        const FileEdit edit = edit_of(file, {{10, 5, "HELLO"}});
        PreparedChange prepared = writer.prepare(std::move(file), edit, {});
        EXPECT_THAT(run({{"a", {{10, 5, "OTHER"}}}}),
                    ElementsAre(Pair("a", "The file is being written by another program")));
        writer.submit(std::move(prepared), [](const WrittenFile& written) { EXPECT_EQ(written.error, ""); });
    }
    EXPECT_EQ(folder.read("a"), test::edited(old_bytes, {{10, 5, "HELLO"}}));
    EXPECT_THAT(run({{"a", {{10, 5, "OTHER"}}}}), IsEmpty());
}

TEST_F(OthersTest, WhoWaitedForAFileGetsTheOneThatIsThereThen) {
    folder.write("a", old_bytes);
    OpenFile first = open("a");
    std::thread replacing([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        folder.write("b", "another file");
        std::filesystem::rename(folder.path("b"), folder.path("a"));
        first.close();
    });
    const OpenFile second = open("a");
    replacing.join();
    EXPECT_EQ(second.read(0, 100), "another file");
}

TEST_F(OthersTest, AChangeThatKeepsTheTimeIsSeen) {
    // By a program that neither locks files nor moves their times, between looking at a file and writing it.
    for (const char* bytes : {"HELLO", "longer"}) {
        folder.write("a", old_bytes);
        RunStore runs = store();
        RunWriter writer(runs, {1, "test", 0});
        OpenFile file = open("a");
        const FileEdit edit = edit_of(file, {{10, 5, bytes}});
        PreparedChange prepared = writer.prepare(std::move(file), edit, {});
        {
            const OpenFile others = OpenFile::open(test::common_system(), folder.path("a"), O_RDWR);
            const std::int64_t time = others.identity().modified;
            others.write(5000, "by somebody else");
            others.set_modified(time);
        }
        const std::string theirs = folder.read("a");
        std::string error;
        writer.submit(std::move(prepared), [&](const WrittenFile& written) { error = written.error; });
        writer.wait();
        EXPECT_EQ(error, "The file has changed while it was being written");
        EXPECT_EQ(folder.read("a"), theirs);
    }
}

TEST_F(OthersTest, ARunCutOffBesideThisOneComesFirst) {
    for (const char* name : {"a", "b"})
        folder.write(name, old_bytes);
    // Looked at while it was half-written, and nobody has put it right yet.
    cut_off_half_way("a", {{10, 100, std::string(100, 'x')}});
    RunStore runs = store();
    std::vector<std::string> lines;
    RunWriter writer(runs, {1, "this", 0}, [&](const std::string& line) { lines.push_back(line); });
    const std::string half = folder.read("a");
    ASSERT_NE(half, old_bytes);
    std::map<std::string, std::string> errors;
    for (const char* name : {"a", "b"}) {
        OpenFile file = open(name);
        const FileEdit edit = edit_of(file, {{5000, 5, "HELLO"}});
        writer.submit(writer.prepare(std::move(file), edit, {}), [&errors, name](const WrittenFile& written) {
            if (!written.error.empty())
                errors[name] = written.error;
        });
    }
    EXPECT_EQ(writer.finish(), 1U);
    EXPECT_THAT(errors, ElementsAre(Pair("a", HasSubstr("was cut off while it wrote the file"))));
    EXPECT_EQ(folder.read("a"), old_bytes);
    EXPECT_EQ(folder.read("b"), test::edited(old_bytes, {{5000, 5, "HELLO"}}));
    EXPECT_THAT(lines, Contains(HasSubstr("1 its old ones")));
    EXPECT_EQ(store().runs().size(), 1U);
}

TEST_F(OthersTest, WhatAnotherProgramChangedInAHalfWrittenFileKeepsItsJournal) {
    folder.write("a", old_bytes);
    cut_off_half_way("a", {{10, 100, std::string(100, 'x')}});
    const std::string half = folder.read("a");
    const auto change_elsewhere = [&] {
        OpenFile::open(test::common_system(), folder.path("a"), O_RDWR).write(5000, "by somebody else");
    };
    change_elsewhere();
    const std::string theirs = folder.read("a");
    EXPECT_THAT(recover(), Contains(HasSubstr("/a, which was changed by another program")));
    EXPECT_EQ(folder.read("a"), theirs);
    // It is listed, and undo names the file.
    ASSERT_EQ(store().runs().size(), 1U);
    EXPECT_EQ(store().runs().front().files, 1U);
    EXPECT_TRUE(store().runs().front().was_cut_off);
    EXPECT_THAT(undo(1), ElementsAre(Pair("a", HasSubstr("cut off while it wrote the file"))));
    EXPECT_EQ(folder.read("a"), theirs);
    // When their change is gone again, ours can be put right.
    folder.write("a", half);
    EXPECT_THAT(undo(1), IsEmpty());
    EXPECT_EQ(folder.read("a"), old_bytes);
}

TEST_F(OthersTest, AFileThatIsGoneDoesNotKeepARunOpen) {
    for (const char* moved : {"music/album/a", "music/album", "music"}) {
        SCOPED_TRACE(moved);
        std::filesystem::remove_all(folder.path("runs"));
        folder.write("music/album/a", old_bytes);
        folder.write("music/album/b", "something else");
        cut_off_half_way("music/album/a", {{10, 100, std::string(100, 'x')}});
        std::filesystem::rename(folder.path(moved), folder.path("moved"));
        EXPECT_THAT(recover(), Contains(HasSubstr("/a, which was changed by another program, or removed")));
        EXPECT_FALSE(store().runs().front().is_open);
        EXPECT_THAT(undo(1), Contains(Key("a")));
        std::filesystem::rename(folder.path("moved"), folder.path(moved));
        EXPECT_THAT(undo(1), IsEmpty());
        EXPECT_EQ(folder.read("music/album/a"), old_bytes);
    }
}

TEST_F(OthersTest, AFolderThatCannotBeListedIsNoObstacle) {
    folder.write("music/a", old_bytes);
    cut_off_half_way("music/a", {{10, 100, std::string(100, 'x')}});
    std::filesystem::permissions(folder.path("music"), std::filesystem::perms(0311));
    if (::geteuid() == 0) {
        for (const char* name : {"", "music", "music/a", "runs", "runs/00000001.open", "runs/lock"})
            ASSERT_EQ(::chown(folder.path(name).c_str(), 65534, 65534), 0);
    }
    {
        const vantaro::test::OrdinaryUser user;
        EXPECT_THAT(recover(), Contains(HasSubstr("1 its old ones")));
        EXPECT_THAT(run({{"music/a", {{10, 5, "HELLO"}}}}), IsEmpty());
    }
    EXPECT_EQ(folder.read("music/a"), test::edited(old_bytes, {{10, 5, "HELLO"}}));
}

TEST_F(OthersTest, AnUndoDoesWithoutWhatCannotBeReached) {
    for (const char* name : {"disk/a", "disk/b"})
        folder.write(name, old_bytes);
    cut_off_half_way("disk/a", {{10, 100, std::string(100, 'x')}});
    // As an unplugged disk leaves it: nothing in the folder that it was mounted on.
    std::filesystem::rename(folder.path("disk"), folder.path("unplugged"));
    folder.make_folder("disk");
    move_to_another_device(1);
    const auto lines = recover();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines.front(), HasSubstr("a file of it cannot be looked at now"));
    EXPECT_TRUE(store().runs().front().is_open);
    EXPECT_THAT(undo(1), Contains(Key("a")));
    EXPECT_FALSE(store().runs().front().is_open);
    EXPECT_THAT(recover(), IsEmpty());
    std::filesystem::remove(folder.path("disk"));
    std::filesystem::rename(folder.path("unplugged"), folder.path("disk"));
    EXPECT_THAT(undo(1), IsEmpty());
    EXPECT_EQ(folder.read("disk/a"), old_bytes);
}

/// A disk with room for so many new files beside those that are there: one that is removed gives its room
/// back.
class SmallDisk final : public test::MadeFileSystem {
public:
    explicit SmallDisk(int room) : MadeFileSystem({}), room_(room) {}
    int rename(const std::string& from, const std::string& to) override {
        const int result = SystemCalls::rename(from, to);
        if (from.find("/runs/") == std::string::npos)
            ++room_;
        return result;
    }

protected:
    int fault(SystemCall call, std::size_t&) override {
        if (call == SystemCall::create_unnamed && room_-- <= 0) {
            ++room_;
            ++refusals;
            return ENOSPC;
        }
        return 0;
    }

private:
    std::atomic<int> room_;

public:
    std::atomic<int> refusals = 0;
};

TEST_F(OthersTest, ADiskWithLittleRoomDoesForOneFileAfterTheOther) {
    std::vector<std::string> names;
    for (int i = 0; i < 40; ++i)
        folder.write(names.emplace_back("music/" + std::to_string(i)), old_bytes);
    SmallDisk calls(3);
    RunStore runs = store(calls);
    std::atomic<int> failed = 0;
    RunWriter writer(runs, {1, "test", 0});
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < names.size(); i = next++) {
            try {
                OpenFile file = OpenFile::open_for_change(calls, folder.path(names[i]));
                const FileEdit edit = edit_of(file, {{10, 5, "longer than before"}});
                writer.submit(writer.prepare(std::move(file), edit, {}),
                              [&](const WrittenFile& written) { failed += written.error.empty() ? 0 : 1; });
            } catch (const std::exception&) {
                ++failed;
            }
        }
    };
    {
        const std::jthread one(work);
        const std::jthread two(work);
    }
    writer.finish();
    EXPECT_EQ(failed, 0);
    EXPECT_GT(calls.refusals, 0);
    for (const std::string& name : names)
        EXPECT_EQ(folder.read(name).size(), old_bytes.size() + 13);
}

} // namespace
} // namespace vantaro::core
