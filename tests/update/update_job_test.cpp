// Updates of real files: order, failures, interruption, and several names of one file.

#include "host/api/exceptions.h"
#include "tests/support/edit_file.h"
#include "tests/support/temporary_folder.h"
#include "vantaro/tags/tag_file.h"
#include "vantaro/update/shared_files.h"
#include "vantaro/update/update_job.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace vantaro::core {
namespace {

using State = TrackOutcome::State;

/// The filter of a test: what it is given, called for each track.
class TestFilter final : public HeapService<TrackFilter> {
public:
    using Edit = std::function<bool(TrackHandle& track, TrackInfo& info)>;
    explicit TestFilter(Edit edit) : edit_(std::move(edit)) {}

    bool apply(TrackHandle* track, const FileStats&, TrackInfo& info) override {
        order.emplace_back(track->path());
        thread = std::this_thread::get_id();
        return edit_(*track, info);
    }
    std::vector<std::string> order;
    std::thread::id thread;

private:
    Edit edit_;
};

class Recorder final : public UpdateObserver {
public:
    void on_track(const TrackOutcome& outcome, std::size_t done, std::size_t total) override {
        order.emplace_back(outcome.track->path());
        states.push_back(outcome.state);
        errors.push_back(outcome.error);
        const auto comments = [](const TrackInfoRecord& info) {
            const std::size_t field = info.find_field("COMMENT");
            return field == no_field ? 0 : info.value_count(field);
        };
        outcomes.emplace_back(comments(outcome.before), comments(outcome.after));
        EXPECT_EQ(done, order.size());
        EXPECT_LE(done, total);
        if (on_each)
            on_each();
    }
    std::vector<std::string> order;
    std::vector<State> states;
    std::vector<std::string> errors;
    std::vector<std::pair<std::size_t, std::size_t>> outcomes; // comments before and after
    std::function<void()> on_each;
};

class UpdateJobTest : public testing::Test {
protected:
    Track& add(const std::string& name, const std::string& sample = "02 - Gulls over Slate.flac") {
        std::filesystem::copy_file(std::filesystem::path(QUORVEX_SAMPLES) / "album" / sample,
                                   folder.path(name));
        return list(name);
    }
    /// Puts what stands under that name on the list, whether it exists or not.
    Track& list(const std::string& name) {
        tracks.push_back(&table.get(folder.path(name), 0));
        return *tracks.back();
    }
    UpdateReport run(TestFilter::Edit edit, unsigned threads = 4) {
        recorder.order.clear();
        filter = make_service<TestFilter>(std::move(edit));
        UpdateJob job(tracks, *filter, recorder, abort, {runs, "test", 0, false, threads});
        const UpdateReport report = job.run();
        EXPECT_EQ(report.problem, "");
        written = job.written_tracks();
        return report;
    }
    std::vector<std::string> values(const std::string& name, const char* field) {
        TrackInfoRecord info;
        read_tags(folder.path(name), info);
        const std::size_t index = info.find_field(field);
        return index == no_field ? std::vector<std::string>() : info.fields()[index].values;
    }

    test::TemporaryFolder folder;
    RunStore runs{folder.path("runs"), real_system_calls()};
    TrackTable table;
    std::vector<Track*> tracks;
    Ref<TestFilter> filter;
    Recorder recorder;
    AbortSignal abort;
    std::vector<TrackHandle*> written;
};

bool set_title(TrackHandle&, TrackInfo& info) {
    info.set_field("TITLE", "New");
    return true;
}

bool add_comment(TrackHandle&, TrackInfo& info) {
    info.add_value("COMMENT", "one more");
    return true;
}

TEST_F(UpdateJobTest, FiltersAndReportsInListOrder) {
    std::vector<std::string> paths;
    for (int i = 0; i < 600; ++i)
        paths.emplace_back(add("track " + std::to_string(i) + ".flac").path());
    const UpdateReport report = run(set_title, 8);
    EXPECT_EQ(report.written, 600U);
    EXPECT_FALSE(report.aborted);
    EXPECT_EQ(filter->order, paths);
    EXPECT_EQ(recorder.order, paths);
    EXPECT_EQ(written.size(), 600U);
    EXPECT_TRUE(std::ranges::is_sorted(written));
    EXPECT_EQ(values("track 599.flac", "TITLE"), std::vector<std::string>{"New"});
}

TEST_F(UpdateJobTest, AFailureStaysWithItsTrack) {
    add("good 1.flac");
    list("missing.flac");
    folder.write("garbage.mp3", "this is no music");
    list("garbage.mp3");
    Track& refused = add("refused.flac");
    add("good 2.flac");
    const UpdateReport report = run([&](TrackHandle& track, TrackInfo& info) {
        if (&track == &refused)
            throw std::runtime_error("not this one");
        return set_title(track, info);
    });
    EXPECT_EQ(recorder.states,
              (std::vector{State::written, State::failed, State::failed, State::failed, State::written}));
    EXPECT_EQ(recorder.errors[1], "File not found");
    EXPECT_EQ(recorder.errors[2], "The first frame of MPEG audio is missing");
    EXPECT_EQ(recorder.errors[3], "not this one");
    EXPECT_EQ(report.failed, 3U);
    EXPECT_NE(values("refused.flac", "TITLE"), std::vector<std::string>{"New"});
    EXPECT_EQ(folder.read("garbage.mp3"), "this is no music");
}

TEST_F(UpdateJobTest, OnlyAnotherTagIsAChangeWhileAFileWaits) {
    // Between the reading of its tags and its lock.
    struct Row {
        const char* name;
        std::function<void(const std::string& path)> change;
        State state;
    };
    const Row rows[] = {
        {"permissions",
         [](const std::string& path) { std::filesystem::permissions(path, std::filesystem::perms(0640)); },
         State::written},
        {"time",
         [](const std::string& path) {
             std::filesystem::last_write_time(path, std::filesystem::file_time_type());
         },
         State::written},
        {"another file of the same tags",
         [](const std::string& path) {
             std::filesystem::copy_file(path, path + ".copy");
             std::filesystem::rename(path + ".copy", path);
         },
         State::written},
        {"tags, and the time kept",
         [](const std::string& path) {
             const auto time = std::filesystem::last_write_time(path);
             test::edit_file(path, {{"ALBUM", {"by another program"}}});
             std::filesystem::last_write_time(path, time);
         },
         State::failed},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        tracks.clear();
        std::filesystem::remove(folder.path("a.flac"));
        add("a.flac");
        recorder.states.clear();
        recorder.errors.clear();
        run([&](TrackHandle& track, TrackInfo& info) {
            row.change(track.path());
            return set_title(track, info);
        });
        ASSERT_EQ(recorder.states, std::vector{row.state});
        EXPECT_EQ(recorder.errors.front().empty(), row.state == State::written);
        EXPECT_EQ(values("a.flac", "TITLE") == std::vector<std::string>{"New"}, row.state == State::written);
    }
}

TEST_F(UpdateJobTest, WhatWasCutOffIsPutRightFirst) {
    add("a.flac");
    {
        // By a process that has ended since this one was started.
        const OpenFile file = OpenFile::open_for_change(runs.calls(), folder.path("a.flac"));
        const FileChange change = describe_change(file, {file.identity().size, {{0, 4, "next"}}});
        OpenRun cut_off = runs.begin({1, "cut off", 0});
        const std::string record = encode(NotedChange{0, change});
        cut_off.journal.append({&record, 1});
        file.write(0, "ne");
    }
    EXPECT_EQ(run(set_title).written, 1U);
    EXPECT_EQ(values("a.flac", "TITLE"), std::vector<std::string>{"New"});
}

TEST_F(UpdateJobTest, WhatIsBeingWrittenIsReadWhenItIsWhole) {
    add("a.flac");
    const std::string whole = folder.read("a.flac");
    folder.write("a.flac", "half of it");
    OpenFile writing = OpenFile::open_for_change(real_system_calls(), folder.path("a.flac"));
    std::jthread writer([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        writing.write(0, whole);
        writing.close();
    });
    EXPECT_EQ(run(set_title).written, 1U);
    EXPECT_EQ(values("a.flac", "TITLE"), std::vector<std::string>{"New"});
}

TEST_F(UpdateJobTest, WritesOnlyWhatComesOutDifferent) {
    const auto title_again = [](TrackHandle&, TrackInfo& info) {
        info.set_field("title", info.value(info.find_field("TITLE"), 0));
        return true;
    };
    const auto changed_but_denied = [](TrackHandle&, TrackInfo& info) {
        info.set_field("TITLE", "New");
        return false;
    };
    for (const TestFilter::Edit& edit :
         {TestFilter::Edit(title_again), TestFilter::Edit(changed_but_denied)}) {
        tracks.clear();
        std::filesystem::remove(folder.path("a.flac"));
        add("a.flac");
        const std::string before = folder.read("a.flac");
        const auto time = std::filesystem::last_write_time(folder.path("a.flac"));
        EXPECT_EQ(run(edit).unchanged, 1U);
        EXPECT_EQ(folder.read("a.flac"), before);
        EXPECT_EQ(std::filesystem::last_write_time(folder.path("a.flac")), time);
    }
}

TEST_F(UpdateJobTest, ATrackListedTwiceIsEditedOnce) {
    add("a.flac");
    list("a.flac");
    EXPECT_EQ(run(add_comment).total, 1U);
    EXPECT_EQ(values("a.flac", "COMMENT"), std::vector<std::string>{"one more"});
}

TEST_F(UpdateJobTest, EachFileIsEditedOnceWhateverItsNames) {
    constexpr int other_files = 50;
    // In place (there is room for the comment), and by a new file (there is none for this one).
    for (const std::string& comment : {std::string("one more"), std::string(200'000, 'x')}) {
        for (const bool hard : {false, true}) {
            SCOPED_TRACE(testing::Message() << comment.size() << (hard ? " hard" : " symbolic"));
            tracks.clear();
            const std::string base = std::to_string(comment.size()) + (hard ? "h" : "s");
            const std::string first = base + ".flac";
            std::vector<Track*> names{&add(first)};
            std::vector<std::string> paths{tracks.back()->path()};
            const auto add_names = [&](const std::string& kind) {
                for (int i = 0; i < 20; ++i) {
                    const std::string name = base + ' ' + kind + std::to_string(i) + ".flac";
                    if (hard)
                        std::filesystem::create_hard_link(folder.path(first), folder.path(name));
                    else
                        folder.link(first, name);
                    names.push_back(&list(name));
                }
            };
            add_names("beside");
            for (int i = 0; i < other_files; ++i)
                add(base + "other" + std::to_string(i) + ".flac");
            add_names("behind");
            names[7]->hold(make_service<HeldInfo>(TrackInfoRecord(), FileStats(), false));
            const std::vector<std::string> old = values(first, "COMMENT");
            std::size_t edited = 0;
            recorder.outcomes.clear();
            const UpdateReport report = run(
                [&](TrackHandle& track, TrackInfo& info) {
                    edited += std::ranges::find(names, &track) != names.end() ? 1U : 0U;
                    info.add_value("COMMENT", comment.c_str());
                    return true;
                },
                8);
            EXPECT_EQ(edited, 1U);
            EXPECT_EQ(report.written, names.size() + other_files);
            EXPECT_EQ(filter->order.front(), folder.path(first));
            EXPECT_EQ(filter->order.size(), 1U + other_files); // each by its own, whatever inodes are reused
            EXPECT_EQ(values(first, "COMMENT").size(), old.size() + 1);
            EXPECT_EQ(recorder.order.size(), tracks.size());
            for (std::size_t i = 0; i < tracks.size(); ++i)
                EXPECT_EQ(recorder.order[i], tracks[i]->path());
            for (const auto& [before, after] : recorder.outcomes)
                EXPECT_EQ(after, before + 1);
            const Ref<HeldInfo> held = names[7]->held();
            EXPECT_EQ(held->info().value_count(held->info().find_field("COMMENT")), old.size() + 1);
            EXPECT_TRUE(std::ranges::binary_search(written, static_cast<TrackHandle*>(names[20])));
        }
    }
}

/// Holds the second rename up until another thread has had time to look at what the first one did.
class SlowRenames final : public SystemCalls {
public:
    std::atomic<bool> is_first_renamed = false;
    std::atomic<bool> may_go_on = false;

    static void wait_for(const std::atomic<bool>& flag) {
        for (int i = 0; i < 5000 && !flag; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

protected:
    int fault(SystemCall call, std::size_t&) override {
        if (call != SystemCall::rename || ++renames_ != 2)
            return 0;
        is_first_renamed = true;
        wait_for(may_go_on);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        return 0;
    }

private:
    std::atomic<int> renames_ = 0;
};

TEST_F(UpdateJobTest, AReplacedFileIsKnownUnderItsOtherNameBeforeItIsReported) {
    SlowRenames calls;
    RunStore slow_runs{folder.path("runs"), calls};
    Track& failing = add("0.flac");
    add("1.flac");
    add("2.flac");
    const std::array<const TrackHandle*, 3> edited{&failing, &add("a.flac"), &add("b.flac")};
    for (int i = 5; i < 257; ++i)
        add(std::to_string(i) + ".flac");
    // Read when two and three tracks are reported, and no sooner.
    for (const char* name : {"a.flac", "b.flac"}) {
        const std::string link = std::string("link to ") + name;
        folder.link(name, link);
        list(link);
    }
    recorder.on_each = [&] {
        if (recorder.order.size() == 1)
            SlowRenames::wait_for(calls.is_first_renamed);
        calls.may_go_on = recorder.order.size() >= 3;
    };
    filter = make_service<TestFilter>([&](TrackHandle& track, TrackInfo& info) {
        if (&track == &failing)
            std::filesystem::resize_file(track.path(), 100); // it fails on a thread of its own
        info.set_field("COMMENT", std::string(200'000, 'x').c_str());
        return std::ranges::find(edited, &track) != edited.end();
    });
    UpdateJob job(tracks, *filter, recorder, abort, {slow_runs, "test", 0, false, 4});
    EXPECT_EQ(job.run().failed, 1U);
    EXPECT_EQ(filter->order.size(), 257U);
}

class RefusedShifts final : public SystemCalls {
protected:
    int fault(SystemCall call, std::size_t&) override { return call == SystemCall::shift ? EOPNOTSUPP : 0; }
};

TEST_F(UpdateJobTest, AFileReplacedAtTheSecondTryIsKnownUnderItsOtherName) {
    RefusedShifts calls;
    RunStore refusing_runs{folder.path("runs"), calls};
    const Track& first = add("a.flac");
    std::filesystem::resize_file(first.path(), 2'000'000);
    for (int i = 0; i < 300; ++i)
        add(std::to_string(i) + ".flac");
    folder.link("a.flac", "link.flac");
    list("link.flac");
    filter = make_service<TestFilter>([&](TrackHandle& track, TrackInfo& info) {
        info.set_field("COMMENT", std::string(20'000, 'x').c_str());
        return &track == &first;
    });
    UpdateJob job(tracks, *filter, recorder, abort, {refusing_runs, "test", 0, false, 4});
    EXPECT_EQ(job.run().written, 2U);
    EXPECT_EQ(filter->order.size(), 301U);
}

TEST(SharedFilesTest, TellsFilesApart) {
    const FileIdentity old{1, 100, 5000, 7};
    const FileIdentity successor{1, 200, 6000, 7};
    const FileIdentity written{1, 200, 6000, 9}; // its times are set later
    const FileIdentity other{1, 100, 5000, 8};   // on the inode that has become free
    SharedFiles files;
    const auto file = files.join(old, 5);
    EXPECT_EQ(files.join(old, 3), file);
    EXPECT_EQ(files.join(old, 8), file);
    EXPECT_EQ(files.first_of(*file), 3U);
    files.expect_successor(file, old, successor);
    EXPECT_EQ(files.join(written, 10), file);
    EXPECT_EQ(files.join(old, 11), file); // looked at before it was replaced
    EXPECT_NE(files.join(other, 12), file);

    const auto failing = files.join({1, 300, 1, 1}, 20);
    files.expect_successor(failing, {1, 300, 1, 1}, {1, 400, 1, 1});
    files.forget_successor(failing);
    EXPECT_NE(files.join({1, 400, 1, 1}, 21), failing);
    EXPECT_EQ(files.join({1, 300, 1, 1}, 22), failing);
}

TEST_F(UpdateJobTest, FurtherNamesOfAFileFailAndStayAsTheFirstDoes) {
    add("fails.flac");
    add("stays.flac");
    folder.link("fails.flac", "fails 2.flac");
    folder.link("stays.flac", "stays 2.flac");
    list("fails 2.flac");
    list("stays 2.flac");
    const UpdateReport report = run([&](TrackHandle& track, TrackInfo&) -> bool {
        if (std::string(track.path()).find("fails") != std::string::npos)
            throw std::runtime_error("not this one");
        return true;
    });
    EXPECT_EQ(filter->order.size(), 2U);
    EXPECT_EQ(recorder.states,
              (std::vector{State::failed, State::unchanged, State::failed, State::unchanged}));
    EXPECT_EQ(recorder.errors[2], "not this one");
    EXPECT_EQ(report.failed, 2U);
}

TEST_F(UpdateJobTest, AFileThatChangesMeanwhileIsLeftAlone) {
    add("a.flac");
    std::string changed;
    run([&](TrackHandle& track, TrackInfo& info) {
        // Another program writes between our reading and our writing.
        test::edit_file(track.path(), {{"ALBUM", {"Somebody else's"}}});
        const timespec times[2] = {{0, UTIME_OMIT}, {12345, 0}};
        ::utimensat(AT_FDCWD, track.path(), times, 0);
        changed = folder.read("a.flac");
        return set_title(track, info);
    });
    EXPECT_EQ(recorder.errors.at(0), "The file has changed since its tags were read");
    EXPECT_EQ(folder.read("a.flac"), changed);
}

TEST_F(UpdateJobTest, AnAbortLeavesTheRestAlone) {
    for (int i = 0; i < 500; ++i)
        add(std::to_string(i) + ".flac");
    const std::string original = folder.read("0.flac");
    recorder.on_each = [&] {
        if (recorder.order.size() == 10)
            abort.set();
    };
    const UpdateReport report = run(set_title, 2);
    EXPECT_TRUE(report.aborted);
    EXPECT_LT(report.written, 500U);
    EXPECT_GE(report.written, 10U);
    std::size_t new_ones = 0;
    for (int i = 0; i < 500; ++i) {
        const std::string name = std::to_string(i) + ".flac";
        if (folder.read(name) == original)
            continue;
        ++new_ones;
        EXPECT_EQ(values(name, "TITLE"), std::vector<std::string>{"New"}) << name;
    }
    EXPECT_EQ(new_ones, report.written);
}

TEST_F(UpdateJobTest, AnAbortBeforeTheStartTouchesNothing) {
    add("a.flac");
    abort.set();
    const UpdateReport report = run(set_title);
    EXPECT_TRUE(report.aborted);
    EXPECT_TRUE(recorder.order.empty());
}

TEST_F(UpdateJobTest, HeldTagsFollowWhatWasWritten) {
    Track& held = add("held.flac");
    Track& other = add("other.flac");
    held.hold(make_service<HeldInfo>(TrackInfoRecord(), FileStats(), true));
    run(set_title);
    const Ref<HeldInfo> now = held.held();
    EXPECT_FALSE(now->is_partial());
    EXPECT_STREQ(now->info().value(now->info().find_field("TITLE"), 0), "New");
    EXPECT_EQ(now->stats().size, std::filesystem::file_size(folder.path("held.flac")));
    EXPECT_FALSE(other.held()); // what nobody asked for is not kept
}

} // namespace
} // namespace vantaro::core
