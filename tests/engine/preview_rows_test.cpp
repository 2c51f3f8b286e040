#include "engine/preview_rows.h"

#include "engine/background_threads.h"
#include "host/api/input.h"
#include "host/api/system.h"
#include "tests/support/fake_actions.h"
#include "tests/support/fake_host.h"
#include "tests/support/short_forms.h"
#include "vantaro/titleformat/title_format.h"

#include <semaphore>

namespace quorvex {
namespace {

using namespace vantaro;

/// Keeps calls until the test runs them.
class FakeQueue final : public HeapService<MainThreadQueue> {
public:
    void post(MainThreadCall* call) override {
        const std::lock_guard lock(mutex_);
        calls_.emplace_back(call);
    }
    std::size_t run_all() {
        std::vector<Ref<MainThreadCall>> calls;
        {
            const std::lock_guard lock(mutex_);
            calls.swap(calls_);
        }
        for (const Ref<MainThreadCall>& call : calls)
            call->run();
        return calls.size();
    }

private:
    std::mutex mutex_; // guards calls_
    std::vector<Ref<MainThreadCall>> calls_;
};

/// Counts how often a file is opened, and lets a test hold reading up.
class SlowInput final : public HeapService<InputEntry> {
public:
    bool reads(const char*) override { return true; }
    InputInfoReader* open_for_info_read(File*, const char* path, AbortFlag& abort) override {
        class Reader final : public HeapService<InputInfoReader> {
        public:
            FileStats get_file_stats(AbortFlag&) override { return {}; }
            void get_info(std::uint32_t subsong, TrackInfo& info, AbortFlag&) override {
                info.set_field("SUBSONG", std::to_string(subsong).c_str());
            }
        };
        opened += std::string(path) + ' ';
        began.release();
        go_on.acquire();
        if (abort.is_aborting())
            throw vantaro_io::exception_aborted();
        if (std::string_view(path) == "broken")
            throw vantaro_io::exception_io_data();
        return make_service<Reader>().detach();
    }

    std::string opened;
    std::counting_semaphore<> began{0};
    std::counting_semaphore<> go_on{0};
};

class Preview : public test::WithHost {
protected:
    Preview() {
        host_.offer<TitleFormatCompiler>(Ref<TitleFormatCompiler>(&title_formatting_));
        host_.offer<MainThreadQueue>(queue_);
        host_.offer<InputEntry>(input_);
    }
    ~Preview() override { join_background_threads(); }

    void start(TrackList tracks) { reader_.start(std::make_shared<TrackList>(std::move(tracks))); }
    /// Reads until the thread has ended. Returns the rows, in the order in which they came.
    std::string delivered() {
        input_->go_on.release(100);
        join_background_threads();
        queue_->run_all();
        return std::exchange(rows_, {});
    }

    core::TitleFormatting title_formatting_;
    const Ref<FakeQueue> queue_ = make_service<FakeQueue>();
    const Ref<SlowInput> input_ = make_service<SlowInput>();
    core::Track first_{"many", 1};
    core::Track second_{"many", 2};
    std::string rows_;
    PreviewReader reader_{[this](std::size_t row, const std::shared_ptr<const ReadTags>& read) {
        rows_ += std::to_string(row) + '=' + test::tags_text(read->info) + ' ';
    }};
};

TEST_F(Preview, NamesAreOneCleanLine) {
    core::Track held("/music/a.mp3", 0);
    held.hold(make_service<core::HeldInfo>(test::tags("TITLE=[a\tb\x01\nc\xC3\xA9]"), FileStats(), false));
    core::Track unknown("/music/b.mp3", 0);
    PreviewRows rows({Ref<TrackHandle>(&held), Ref<TrackHandle>(&unknown)});
    EXPECT_EQ(rows.name(0), "a_b__c\xC3\xA9");
    EXPECT_EQ(rows.name(1), "b");
    EXPECT_EQ(rows.name(2), "<ERROR>");
    EXPECT_EQ(rows.preview({}, 1).text, "No changes");
    EXPECT_EQ(rows.preview({}, 2).text, "<ERROR>");
}

TEST_F(Preview, FailuresAreToldInTheirRow) {
    PreviewRows rows(tag_io_.tracks("a b"));
    const Script script{make_service<test::FakeAction>(test::kind(1), "x"),
                        make_service<test::FakeAction>(test::kind(2), "fail")};
    EXPECT_EQ(rows.preview(script, 1).text, "Erorr: no such luck");
    EXPECT_EQ(rows.preview(script, 1, script[1].get()).text, "LOG = \"x 1/2\"");
    const auto read = std::make_shared<ReadTags>();
    read->info = test::tags("LOG=[old]");
    rows.hold(1, read);
    EXPECT_EQ(rows.preview(script, 1, script[1].get()).text, "LOG = \"old\"; \"x 1/2\"");
    rows.forget_read();
    EXPECT_EQ(rows.preview(script, 1, script[1].get()).text, "LOG = \"x 1/2\"");
}

TEST_F(Preview, ReadsWhatTheHostDoesNotHold) {
    tag_io_.track("held").is_held = true;
    TrackList tracks = tag_io_.tracks("held broken x");
    tracks.insert(tracks.begin() + 1, {Ref<TrackHandle>(&first_), Ref<TrackHandle>(&second_)});
    start(std::move(tracks));
    EXPECT_EQ(delivered(), "1=SUBSONG=[1] 2=SUBSONG=[2] 4=SUBSONG=[0] ");
    EXPECT_EQ(input_->opened, "many broken x ") << "subsongs share a file";
}

TEST_F(Preview, DeliversNothingOnceCancelled) {
    start(tag_io_.tracks("a b c"));
    input_->began.acquire();
    reader_.cancel();
    EXPECT_EQ(delivered(), "");
    EXPECT_EQ(input_->opened, "a ") << "it has stopped at once";

    // Results that were on their way are dropped, and those of the next start come.
    input_->go_on.release(2);
    start(tag_io_.tracks("a b"));
    join_background_threads();
    start(tag_io_.tracks("c"));
    EXPECT_EQ(delivered(), "0=SUBSONG=[0] ");
    {
        PreviewReader gone([this](std::size_t, const auto&) { rows_ += "late"; });
        gone.start(std::make_shared<TrackList>(tag_io_.tracks("a")));
        join_background_threads();
    }
    EXPECT_EQ(queue_->run_all(), 1U);
    EXPECT_EQ(rows_, "");
}

} // namespace
} // namespace quorvex
