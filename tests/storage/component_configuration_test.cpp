#include "vantaro/storage/component_configuration.h"

#include "host/api/exceptions.h"
#include "tests/storage/record_stream.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <functional>
#include <thread>

namespace vantaro::core {
namespace {

using test::record;
using test::stream;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

constexpr const char* file_name = "c.so.cfg";

/// Runs it in a process of its own; whether it returned true there.
bool is_true_in_child(const std::function<bool()>& run) {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(run() ? 0 : 1);
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class Configuration : public testing::Test {
protected:
    ComponentConfiguration loaded() {
        ComponentConfiguration configuration(folder_.path(), "c.so");
        EXPECT_THAT(configuration.load().notices, IsEmpty());
        return configuration;
    }
    std::string stored() { return folder_.read(file_name); }
    /// Other files than the configuration and its lock.
    std::vector<std::string> others() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            if (const std::string name = entry.path().filename();
                name != file_name && name != "c.so.cfg.lock")
                names.push_back(name);
        return names;
    }
    mode_t mode(std::string_view name) {
        struct stat status {};
        EXPECT_EQ(::stat(folder_.path(name).c_str(), &status), 0);
        return status.st_mode & 07777;
    }

    test::TemporaryFolder folder_;
};

TEST_F(Configuration, KeepsWhatTheComponentWrote) {
    ComponentConfiguration first(folder_.path("x/y"), "c.so");
    EXPECT_EQ(first.load().bytes, "");
    EXPECT_FALSE(first.save("").is_written);
    EXPECT_FALSE(std::filesystem::exists(folder_.path("x"))) << "nothing to keep, nothing is made";

    const std::string bytes = stream("a1 b2 a3") + "tail";
    EXPECT_TRUE(first.save(bytes).is_written);
    EXPECT_EQ(folder_.read("x/y/c.so.cfg"), bytes);
    EXPECT_EQ(mode("x"), 0700U);
    EXPECT_EQ(mode("x/y"), 0700U);
    EXPECT_EQ(mode("x/y/c.so.cfg"), 0600U);
    EXPECT_EQ(ComponentConfiguration(folder_.path("x/y"), "c.so").load().bytes, bytes);

    struct stat before {
    }, after{};
    ASSERT_EQ(::stat(first.path().c_str(), &before), 0);
    EXPECT_FALSE(first.save(bytes).is_written);
    ASSERT_EQ(::stat(first.path().c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino) << "the same is not written again";

    for (const std::string& name : {std::string(), std::string("a/b"), std::string("a\0b", 3)})
        EXPECT_THROW(ComponentConfiguration(folder_.path(), name), std::invalid_argument);
}

TEST_F(Configuration, TakesOnlyOwnChangesToTheFile) {
    folder_.write(file_name, stream("a1 b1"));
    folder_.set_mode(file_name, 0640);
    ComponentConfiguration ours = loaded();
    ComponentConfiguration theirs = loaded();
    EXPECT_TRUE(theirs.save(stream("a1 b2 n1")).is_written);
    EXPECT_THAT(ours.save(stream("a3 b1")).notices, IsEmpty());
    EXPECT_EQ(stored(), stream("a3 b2 n1"));
    // This component still has its old b, which is no change of its own the second time either.
    EXPECT_FALSE(ours.save(stream("a3 b1")).is_written);
    EXPECT_EQ(stored(), stream("a3 b2 n1"));
    EXPECT_THAT(others(), IsEmpty());
    EXPECT_EQ(mode(file_name), 0640U);
}

TEST_F(Configuration, KeepsTheOtherVersionOfAConflict) {
    for (const char* value : {"2", "3"}) {
        folder_.write(file_name, stream("a0"));
        ComponentConfiguration ours = loaded();
        const std::string their_bytes = record("a", std::string("theirs") + value) + "tail";
        folder_.write(file_name, their_bytes);
        const auto saved = ours.save(record("a", value));
        EXPECT_EQ(stored(), record("a", value));
        ASSERT_THAT(saved.notices, SizeIs(1));
        const std::string kept = saved.notices[0].substr(saved.notices[0].rfind('/') + 1);
        EXPECT_THAT(kept, MatchesRegex("c\\.so\\.cfg\\.conflict-[0-9]{8}-[0-9]{6}(-2)?"));
        EXPECT_EQ(folder_.read(kept), their_bytes);
    }
    EXPECT_THAT(others(), SizeIs(2)) << "the second did not replace the first";
}

TEST_F(Configuration, HandsOverWhatOthersStored) {
    const auto taken_by = [](ComponentConfiguration& configuration, const std::string& bytes,
                             bool is_accepted = true) {
        std::string taken;
        configuration.take_changes(bytes, [&](std::string_view records) {
            taken += records;
            return is_accepted;
        });
        return taken;
    };
    // A new user: both processes have only what components start with.
    ComponentConfiguration ours = loaded();
    ours.complete(stream("a0 b0"));
    ComponentConfiguration theirs = loaded();
    theirs.complete(stream("a0 b0"));
    theirs.save(stream("a1 b0"));
    EXPECT_EQ(taken_by(ours, stream("a0 b2")), stream("a1"));
    EXPECT_THAT(ours.save(stream("a1 b2")).notices, IsEmpty());
    EXPECT_EQ(stored(), stream("a1 b2"));
    EXPECT_EQ(taken_by(ours, stream("a1 b2")), "");

    theirs.take_changes(stream("a1 b0"), [](std::string_view) { return true; });
    theirs.save(stream("a3 b2"));
    EXPECT_EQ(taken_by(ours, stream("a1 b2"), false), stream("a3"));
    EXPECT_EQ(taken_by(ours, stream("a1 b2")), stream("a3")) << "offered again, since it was not taken";
    EXPECT_THAT(ours.save(stream("a4 b2")).notices, IsEmpty()) << "it has seen theirs";
    EXPECT_EQ(stored(), stream("a4 b2"));
    EXPECT_THAT(others(), IsEmpty());

    theirs.save(stream("a5 b2"));
    EXPECT_EQ(taken_by(ours, stream("a6 b2")), "") << "what both changed stays ours";
    EXPECT_THAT(ours.save(stream("a6 b2")).notices, SizeIs(1)) << "and theirs is kept";
    EXPECT_EQ(stored(), stream("a6 b2"));
}

TEST_F(Configuration, SavesAVariableThatStoodTwice) {
    const std::string twice = stream("a1 b1 a2");
    folder_.write(file_name, twice);
    ComponentConfiguration configuration = loaded();
    const auto saved = configuration.save(stream("a3 b1")); // it has read both, and knows the last
    EXPECT_EQ(stored(), stream("a3 b1"));
    ASSERT_THAT(saved.notices, SizeIs(1));
    EXPECT_EQ(folder_.read(saved.notices[0].substr(saved.notices[0].rfind('/') + 1)), twice);
    EXPECT_FALSE(configuration.save(stream("a3 b1")).is_written);
}

TEST_F(Configuration, SetsBrokenFilesAside) {
    const std::string broken = stream("a1 b2").substr(0, 40);
    const auto is_broken_copy = [&](const std::string& notice) {
        EXPECT_THAT(notice, HasSubstr(folder_.path(file_name) + " could not be used ("));
        const std::string name = notice.substr(notice.rfind('/') + 1);
        EXPECT_THAT(name, MatchesRegex("c\\.so\\.cfg\\.broken-[0-9]{8}-[0-9]{6}(-[0-9])?"));
        return folder_.read(name);
    };
    folder_.write(file_name, broken);
    ComponentConfiguration configuration(folder_.path(), "c.so");
    const auto result = configuration.load();
    EXPECT_EQ(result.bytes, "");
    ASSERT_THAT(result.notices, SizeIs(1));
    EXPECT_EQ(is_broken_copy(result.notices[0]), broken);
    EXPECT_FALSE(std::filesystem::exists(folder_.path(file_name)));

    folder_.write(file_name, broken + "2");
    const auto saved = configuration.save(stream("a1"));
    ASSERT_THAT(saved.notices, SizeIs(1));
    EXPECT_EQ(is_broken_copy(saved.notices[0]), broken + "2");
    EXPECT_EQ(stored(), stream("a1"));

    ComponentConfiguration refusing = loaded();
    const std::string notice = refusing.set_aside("no such colour");
    EXPECT_THAT(notice, HasSubstr("no such colour"));
    EXPECT_EQ(is_broken_copy(notice), stream("a1"));
    EXPECT_THAT(others(), SizeIs(3));
    EXPECT_TRUE(refusing.save(stream("b1")).is_written);
    EXPECT_EQ(stored(), stream("b1"));

    ComponentConfiguration late = loaded();
    folder_.write(file_name, stream("b2"));
    EXPECT_THAT(late.set_aside("bad"), HasSubstr("replaced since"));
    EXPECT_EQ(stored(), stream("b2"));

    ComponentConfiguration removed = loaded();
    std::filesystem::remove(folder_.path(file_name));
    EXPECT_THAT(removed.set_aside("bad"), HasSubstr("removed since"));
    ComponentConfiguration without_file = loaded();
    EXPECT_THAT(without_file.set_aside("bad"),
                HasSubstr("which is not there, could not start without it (bad)"));
    EXPECT_FALSE(std::filesystem::exists(folder_.path(file_name)));
}

TEST_F(Configuration, WithoutAFolderOnlyWhatChangesIsMissed) {
    ComponentConfiguration configuration("", "c.so");
    configuration.load();
    configuration.complete(stream("a1"));
    EXPECT_FALSE(configuration.save(stream("a1")).is_written);
    EXPECT_THROW(configuration.save(stream("a2")), vantaro_io::exception_io_not_found);
}

TEST_F(Configuration, LosesNothingOfManyWriters) {
    constexpr int writers = 4;
    constexpr int saves = 25;
    std::string kind;
    const auto write = [&](int writer) {
        for (int n = 0; n < saves; ++n) {
            ComponentConfiguration configuration(folder_.path(), "c.so");
            configuration.load();
            configuration.save(record(kind + std::to_string(writer) + "." + std::to_string(n), "value"));
        }
        return true;
    };
    kind = "process";
    std::vector<pid_t> children;
    for (int writer = 0; writer < writers; ++writer) {
        children.push_back(::fork());
        if (children.back() == 0)
            ::_exit(write(writer) ? 0 : 1);
    }
    for (const pid_t child : children) {
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    kind = "thread";
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer)
        threads.emplace_back(write, writer);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(stored().size(), record("", "value").size() * 2 * writers * saves);
}

TEST_F(Configuration, WhatCannotBeReadIsNotOverwritten) {
    folder_.write(file_name, stream("a1"));
    folder_.set_mode(file_name, 0);
    folder_.set_mode("", 0777);
    {
        const test::OrdinaryUser user;
        ComponentConfiguration configuration(folder_.path(), "c.so");
        EXPECT_THROW(configuration.load(), vantaro_io::exception_io_denied);
        EXPECT_THROW(configuration.save(stream("a2")), vantaro_io::exception_io_denied);
    }
    EXPECT_EQ(stored(), stream("a1"));

    ComponentConfiguration configuration = loaded();
    EXPECT_THROW(configuration.save(stream("a1").substr(0, 20)), vantaro_io::exception_io_data);
    EXPECT_EQ(stored(), stream("a1"));

    std::filesystem::remove(folder_.path(file_name));
    for (const auto& make_other :
         {std::function<void()>([&] { folder_.make_folder(file_name); }),
          std::function<void()>([&] { ::mkfifo(folder_.path(file_name).c_str(), 0600); }),
          std::function<void()>([&] { folder_.link(file_name, file_name); })}) {
        make_other();
        EXPECT_THROW(configuration.save(stream("a2")), vantaro_io::exception_io);
        EXPECT_THROW(ComponentConfiguration(folder_.path(), "c.so").load(), vantaro_io::exception_io);
        std::filesystem::remove(folder_.path(file_name));
    }
    EXPECT_THAT(others(), IsEmpty());
}

TEST_F(Configuration, FailingToWriteLeavesTheOldFile) {
    folder_.write(file_name, stream("a1"));
    ComponentConfiguration configuration = loaded();
    const std::string large = record("a", std::string(100'000, 'x'));
    EXPECT_TRUE(is_true_in_child([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{.rlim_cur = 5000, .rlim_max = 5000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        try {
            configuration.save(large);
        } catch (const vantaro_io::exception_io& error) {
            return std::string(error.what()) == folder_.path(file_name) + ": File too large";
        }
        return false;
    }));
    EXPECT_EQ(stored(), stream("a1"));
    EXPECT_THAT(others(), IsEmpty());

    folder_.set_mode("", 0555);
    folder_.set_mode(file_name, 0666);
    {
        const test::OrdinaryUser user;
        EXPECT_FALSE(configuration.save(stream("a1")).is_written) << "nothing to write needs no permission";
        EXPECT_THROW(configuration.save(large), vantaro_io::exception_io_denied);
    }
    EXPECT_EQ(stored(), stream("a1"));
    EXPECT_TRUE(configuration.save(large).is_written) << "a later try succeeds";
    EXPECT_EQ(stored(), large);
}

TEST_F(Configuration, WritesThroughLinks) {
    folder_.make_folder("elsewhere");
    folder_.link("elsewhere/link", file_name);
    folder_.link("../deep/er/real", "elsewhere/link");
    ComponentConfiguration configuration = loaded();
    for (const char* bytes : {"a1", "a2"}) {
        EXPECT_TRUE(configuration.save(stream(bytes)).is_written);
        EXPECT_EQ(folder_.read("deep/er/real"), stream(bytes));
        for (const char* link : {file_name, "elsewhere/link"})
            EXPECT_TRUE(std::filesystem::is_symlink(folder_.path(link))) << link;
    }
    EXPECT_EQ(mode("deep/er"), 0700U);
}

} // namespace
} // namespace vantaro::core
