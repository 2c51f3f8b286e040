// Every system call of a write fails in turn, and the process is killed before every one of them in turn.
// Whatever happens, each file has its old or its new bytes at the latest after the next start.

#include "tests/journal/run_fixture.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <mutex>
#include <new>

namespace vantaro::core {
namespace {

constexpr std::size_t block = 4096;

enum class Fault { fail_once, fail_on, kill, kill_in_a_write, throw_once };

/// The system until a certain call.
class FaultySystem final : public SystemCalls {
public:
    FaultySystem(Fault fault, std::size_t call) : fault_(fault), at_(call) {}

    /// Whether there were as many calls.
    bool was_reached() const { return count_ > at_; }
    FileSystemTraits file_system(int) override { return traits; }
    FileSystemTraits traits = test::common_traits();
    bool takes_no_unnamed_files = false;
    bool takes_no_shifts = false;

protected:
    int fault(SystemCall call, std::size_t& size) override {
        const std::lock_guard lock(mutex_);
        if (takes_no_unnamed_files && call == SystemCall::create_unnamed)
            return EOPNOTSUPP;
        if (takes_no_shifts && call == SystemCall::shift)
            return EOPNOTSUPP;
        const std::size_t number = count_++;
        switch (fault_) {
        case Fault::fail_once:
            return number == at_ ? error_of(call) : 0;
        case Fault::fail_on:
            return number >= at_ ? error_of(call) : 0;
        case Fault::kill:
            if (number == at_)
                ::kill(::getpid(), SIGKILL);
            return 0;
        case Fault::throw_once:
            // Not from where things are cleared away.
            if (number == at_ && call != SystemCall::unlink)
                throw std::bad_alloc();
            return 0;
        case Fault::kill_in_a_write:
            if (number == at_)
                size = (size + 1) / 2;
            if (number == at_ + 1)
                ::kill(::getpid(), SIGKILL);
            return 0;
        }
        return 0;
    }

private:
    static int error_of(SystemCall call) {
        switch (call) {
        case SystemCall::write:
        case SystemCall::copy:
        case SystemCall::allocate:
        case SystemCall::create:
        case SystemCall::create_unnamed:
            return ENOSPC;
        case SystemCall::open:
        case SystemCall::rename:
            return EACCES;
        default:
            return EIO;
        }
    }

    const Fault fault_;
    const std::size_t at_;
    std::mutex mutex_; // guards the count
    std::size_t count_ = 0;
};

struct Scenario {
    const char* name;
    std::vector<Splice> splices;
    bool has_two_names = false;
    bool takes_no_unnamed_files = false;
    bool takes_no_shifts = false;
    FileSystemTraits traits = test::common_traits();
};

std::ostream& operator<<(std::ostream& out, const Scenario& scenario) {
    return out << scenario.name;
}

const std::string old_bytes = test::pattern(12 * block + 50);

class FaultTest : public test::RunTest, public testing::WithParamInterface<Scenario> {
protected:
    FaultTest() {
        folder.write("music/a", old_bytes);
        if (GetParam().has_two_names)
            std::filesystem::create_hard_link(folder.path("music/a"), folder.path("music/b"));
    }
    std::string new_bytes() const { return test::edited(old_bytes, GetParam().splices); }
    std::unique_ptr<FaultySystem> system(Fault fault, std::size_t call) const {
        auto system = std::make_unique<FaultySystem>(fault, call);
        system->takes_no_unnamed_files = GetParam().takes_no_unnamed_files;
        system->takes_no_shifts = GetParam().takes_no_shifts;
        system->traits = GetParam().traits;
        return system;
    }
    std::map<std::string, std::string> edit(SystemCalls& calls) const {
        return run({{"music/a", GetParam().splices}}, calls);
    }
    /// Does the work in a process of its own. Returns whether it was killed.
    static bool is_killed(const std::function<void()>& work) {
        const pid_t child = ::fork();
        if (child == 0) {
            work();
            ::_exit(0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    }
    void start_afresh() const {
        folder.write("music/a", old_bytes);
        std::filesystem::remove_all(folder.path("runs"));
    }
    void expect_old_or_new() const {
        const std::string bytes = folder.read("music/a");
        EXPECT_TRUE(bytes == old_bytes || bytes == new_bytes());
        EXPECT_EQ(names_in("music").size(), GetParam().has_two_names ? 2U : 1U)
            << "something was left behind";
        for (const std::string& name : names_in("runs"))
            EXPECT_FALSE(name.ends_with(".open")) << name;
    }
};

TEST_P(FaultTest, AFailingCallLosesNothing) {
    for (const Fault fault : {Fault::fail_once, Fault::fail_on}) {
        std::size_t call = 0;
        for (bool was_reached = true; was_reached; ++call) {
            SCOPED_TRACE((fault == Fault::fail_on ? "from call " : "call ") + std::to_string(call));
            start_afresh();
            const auto calls = system(fault, call);
            const auto errors = edit(*calls);
            was_reached = calls->was_reached();
            EXPECT_TRUE(was_reached || errors.empty());
            if (fault == Fault::fail_once && errors.contains("music/a")) {
                EXPECT_EQ(folder.read("music/a"), old_bytes);
            }
            recover();
            expect_old_or_new();
            if (errors.empty()) {
                EXPECT_EQ(folder.read("music/a"), new_bytes());
            }
        }
        EXPECT_GT(call, 8U);
    }
}

TEST_P(FaultTest, ALackOfMemoryLosesNothing) {
    std::size_t call = 0;
    for (bool was_reached = true; was_reached; ++call) {
        SCOPED_TRACE("call " + std::to_string(call));
        start_afresh();
        const auto calls = system(Fault::throw_once, call);
        const auto errors = edit(*calls);
        was_reached = calls->was_reached();
        recover();
        expect_old_or_new();
        if (errors.empty()) {
            EXPECT_EQ(folder.read("music/a"), new_bytes());
        }
    }
    EXPECT_GT(call, 8U);
}

TEST_P(FaultTest, AKillAnywhereLosesNothing) {
    std::size_t kills = 0;
    for (const Fault fault : {Fault::kill, Fault::kill_in_a_write}) {
        bool was_killed = true;
        for (std::size_t call = 0; was_killed; ++call) {
            SCOPED_TRACE("before call " + std::to_string(call));
            start_afresh();
            was_killed = is_killed([&] { edit(*system(fault, call)); });
            kills += was_killed ? 1 : 0;
            recover();
            expect_old_or_new();
            if (!was_killed) {
                EXPECT_EQ(folder.read("music/a"), new_bytes());
            }
            // What such a run has done can be taken back.
            for (const RunSummary& summary : store().runs())
                EXPECT_TRUE(undo(summary.number).empty());
            EXPECT_EQ(folder.read("music/a"), old_bytes);
        }
    }
    EXPECT_GT(kills, 16U);
}

TEST_P(FaultTest, AKillDuringRecoveryLosesNothing) {
    bool was_killed = true;
    for (std::size_t call = 0; was_killed; ++call) {
        start_afresh();
        was_killed = is_killed([&] { edit(*system(Fault::kill_in_a_write, call)); });
        const auto kill_recovery = [&](std::size_t at) {
            return is_killed([&] { recover(*system(Fault::kill_in_a_write, at)); });
        };
        for (std::size_t at = 0; kill_recovery(at); ++at)
            continue;
        SCOPED_TRACE("run killed behind call " + std::to_string(call));
        recover();
        expect_old_or_new();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Journal, FaultTest,
    testing::Values(
        Scenario{"InPlace", {{10, 5, "HELLO"}, {5000, 700, std::string(700, 'x')}}},
        Scenario{"LongerEnd", {{3, 1, "X"}, {12 * block, 50, std::string(9000, 'x')}}},
        Scenario{"ShorterEnd", {{3, 1, "X"}, {10 * block, 2 * block + 50, "short"}}},
        Scenario{"BlocksInserted", {{10, 500, std::string(500 + block, 'x')}, {9 * block, 1, "X"}}},
        Scenario{"BlocksRemoved", {{3, 1, "X"}, {10, 100 + block, std::string(100, 'x')}}},
        Scenario{"Replaced", {{10, 5, "longer than before"}, {9 * block, 1, "X"}}},
        Scenario{"NoUnnamedFiles", {{10, 5, "longer than before"}}, false, true},
        Scenario{"ShiftRefused", {{10, 500, std::string(500 + block, 'x')}}, false, false, true},
        Scenario{"TwoNames", {{10, 5, "longer than before"}}, true},
        Scenario{"Rewritten",
                 {{10, 5, "longer than before"}},
                 false,
                 false,
                 false,
                 {.replaces_safely = false, .without_order = true}},
        Scenario{"BlocksInsertedWithoutOrder",
                 {{10, 500, std::string(500 + block, 'x')}},
                 false,
                 false,
                 false,
                 {.replaces_safely = false, .without_order = true, .shifts = test::common_traits().shifts}},
        Scenario{"Remote", {{10, 5, "longer than before"}}, false, false, false, {.is_remote = true}}),
    [](const auto& scenario) { return scenario.param.name; });

} // namespace
} // namespace vantaro::core
