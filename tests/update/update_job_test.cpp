// Updates of real files: order, failures, interruption, and several names of one file.

#include "host/api/exceptions.h"
#include "tests/support/temporary_folder.h"
#include "vantaro/tags/tag_file.h"
#include "vantaro/update/update_job.h"

#include <gtest/gtest.h>

#include <tfilestream.h>

#include <fcntl.h>
#include <sys/stat.h>

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
        EXPECT_EQ(done, order.size());
        EXPECT_LE(done, total);
        if (on_each)
            on_each();
    }
    std::vector<std::string> order;
    std::vector<State> states;
    std::vector<std::string> errors;
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
    EXPECT_EQ(recorder.errors[2], "Unsupported format or corrupted file");
    EXPECT_EQ(recorder.errors[3], "not this one");
    EXPECT_EQ(report.failed, 3U);
    EXPECT_NE(values("refused.flac", "TITLE"), std::vector<std::string>{"New"});
    EXPECT_EQ(folder.read("garbage.mp3"), "this is no music");
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

TEST_F(UpdateJobTest, SeveralNamesOfOneFileAreEditedOneAfterTheOther) {
    add("a.flac");
    folder.link("a.flac", "b.flac");
    std::filesystem::create_hard_link(folder.path("a.flac"), folder.path("c.flac"));
    list("b.flac");
    list("c.flac");
    for (int i = 0; i < 50; ++i)
        add("other " + std::to_string(i) + ".flac");
    const UpdateReport report = run(add_comment, 8);
    EXPECT_EQ(report.written, 53U);
    EXPECT_EQ(recorder.order.size(), 53U);
    EXPECT_EQ(values("a.flac", "COMMENT"), (std::vector<std::string>{"one more", "one more", "one more"}));
}

TEST_F(UpdateJobTest, AFileThatChangesMeanwhileIsLeftAlone) {
    add("a.flac");
    std::string changed;
    run([&](TrackHandle& track, TrackInfo& info) {
        // Another program writes between our reading and our writing.
        TagLib::FileStream stream(track.path());
        write_tags(stream, std::vector<FieldChange>{{"ALBUM", {"Somebody else's"}}});
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
