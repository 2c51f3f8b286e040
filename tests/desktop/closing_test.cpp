// Closing the window at any moment.

#include "tests/desktop/desktop_fixture.h"

#include "vantaro/tags/tag_file.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <csignal>

namespace vantaro::test {
namespace {

class Closing : public WithDesktop {
protected:
    Closing() {
        folder_.make_folder("many");
        for (int i = 0; i < file_count; ++i)
            std::filesystem::copy(album_ + "/03 - Rope and Tar.ogg",
                                  folder_.path("many/" + std::to_string(i) + ".ogg"));
    }
    /// How many files have the new genre; each has the old or the new one.
    int changed_files() {
        int count = 0;
        for (int i = 0; i < file_count; ++i) {
            TrackInfoRecord info;
            read_tags(folder_.path("many/" + std::to_string(i) + ".ogg"), info);
            const std::string genre = info.value(info.find_field("GENRE"), 0);
            count += genre == "Changed" ? 1 : 0;
            EXPECT_TRUE(genre == "Changed" || genre == old_genre_) << genre;
        }
        return count;
    }
    void start_update(int milliseconds_a_track = 10) {
        load(folder_.path("many"));
        old_genre_ = cell(0, Column::genre);
        item_.milliseconds = milliseconds_a_track;
        std::vector<TrackHandle*> tracks;
        for (int row = 0; row < window_->model().rowCount(); ++row)
            tracks.push_back(&window_->model().track(row));
        const auto commands = context_menu(host_, tracks, {});
        commands.front().node->execute(tracks.data(), tracks.size());
    }

    static constexpr int file_count = 600;
    std::string old_genre_;
};

TEST_F(Closing, IsPossibleWhileTracksAreFoundAndRead) {
    for (const int milliseconds : {0, 1, 3, 10, 30, 80}) {
        open();
        bool has_closed = false;
        window_->on_closed = [&] { has_closed = true; };
        window_->add({folder_.path("many"), album_});
        QTest::qWait(milliseconds);
        EXPECT_TRUE(window_->close());
        EXPECT_TRUE(has_closed);
        host_.wait_until_idle();
        EXPECT_TRUE(wait_for([this] { return !window_->loader().is_busy(); })) << milliseconds;
    }
    EXPECT_TRUE(question_.asked.empty());
}

TEST_F(Closing, CancelledLoadingKeepsWhatIsThere) {
    window_->add({folder_.path("many"), album_});
    ASSERT_TRUE(wait_for([this] { return window_->model().rowCount() > 0; }));
    window_->loader().cancel();
    ASSERT_TRUE(wait_for([this] { return !window_->loader().is_busy(); }));
    EXPECT_LE(window_->model().rowCount(), file_count);
    load(album_);
    EXPECT_EQ(cell(window_->model().rowCount() - 1, Column::title), "Night Crossing");
}

TEST_F(Closing, AsksDuringAnUpdateAndEndsItBetweenFiles) {
    start_update();
    question_.answer = button::no;
    EXPECT_FALSE(window_->close());
    EXPECT_EQ(question_.asked.size(), 1U);
    EXPECT_TRUE(window_->isVisible());
    QTest::qWait(500);
    question_.answer = button::yes;
    EXPECT_TRUE(window_->close());
    host_.wait_until_idle();
    const int changed = changed_files();
    EXPECT_GT(changed, 0);
    EXPECT_LT(changed, file_count);
}

TEST_F(Closing, AtOnceEndsAnUpdateBetweenFiles) {
    start_update();
    QTest::qWait(500);
    window_->close_at_once(); // as an interrupt does
    EXPECT_FALSE(window_->isVisible());
    host_.wait_until_idle();
    const int changed = changed_files();
    EXPECT_GT(changed, 0);
    EXPECT_LT(changed, file_count);
    EXPECT_TRUE(question_.asked.empty());
}

TEST_F(Closing, WaitsForWindowsThatDoNotWantToGo) {
    class Stubborn final : public QWidget {
    public:
        bool may_close = false;

    protected:
        void closeEvent(QCloseEvent* event) override { event->setAccepted(may_close); }
    };
    Stubborn window;
    window.show();
    dialogs_.register_dialog(static_cast<QWidget*>(&window));
    EXPECT_FALSE(window_->close());
    window.may_close = true;
    EXPECT_TRUE(window_->close());
    EXPECT_FALSE(window.isVisible());
    dialogs_.unregister_dialog(static_cast<QWidget*>(&window));
}

TEST_F(Closing, UndoesInTurnWithUpdates) {
    start_update(0);
    ASSERT_TRUE(wait_for_updates());
    EXPECT_EQ(changed_files(), file_count);
    window_->undo_last_run();
    std::vector<TrackHandle*> tracks;
    for (int row = 0; row < window_->model().rowCount(); ++row)
        tracks.push_back(&window_->model().track(row));
    context_menu(host_, tracks, {}).front().node->execute(tracks.data(), tracks.size());
    ASSERT_TRUE(wait_for_updates());
    EXPECT_EQ(changed_files(), file_count) << "the update came second";
    const std::vector<RunSummary> runs = host_.runs().runs();
    ASSERT_EQ(runs.size(), 3U);
    for (const RunSummary& run : runs)
        EXPECT_EQ(run.files, static_cast<std::uint64_t>(file_count));
}

class Program : public testing::Test {
protected:
    /// Starts `vantaro` on a platform without a display; interrupts it when it has not ended by itself.
    /// Returns the exit status.
    int run(const QStringList& arguments, const char* platform = "offscreen") {
        QProcessEnvironment environment;
        environment.insert("QT_QPA_PLATFORM", platform);
        environment.insert("HOME", QString::fromStdString(folder_.path()));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(VANTARO, arguments);
        EXPECT_TRUE(process.waitForStarted());
        was_interrupted_ = !process.waitForFinished(3000);
        if (was_interrupted_) {
            ::kill(static_cast<pid_t>(process.processId()), SIGINT);
            EXPECT_TRUE(process.waitForFinished(20000));
        }
        error_ = process.readAllStandardError().toStdString();
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    const TemporaryFolder folder_;
    bool was_interrupted_ = false;
    std::string error_;
};

TEST_F(Program, OpensItsWindowForFilesAndEndsWhenInterrupted) {
    const std::string memory = ".config/vantaro/window.ini";
    EXPECT_EQ(run({QUORVEX_SAMPLES "/album"}), 130) << error_;
    EXPECT_TRUE(was_interrupted_);
    EXPECT_NE(folder_.read(memory).find("order=title:"), std::string::npos);
    EXPECT_EQ(run({}), 130) << error_;
    EXPECT_TRUE(was_interrupted_);
    EXPECT_EQ(run({"no such file"}), 2);
    EXPECT_FALSE(was_interrupted_);
    EXPECT_NE(error_.find("Nothing to do"), std::string::npos) << error_;
    EXPECT_EQ(run({}, "no such display"), 2);
    EXPECT_NE(error_.find("vantaro: "), std::string::npos) << error_;
}

TEST_F(Program, LeavesTheToolkitItsOptions) {
    const std::string song = folder_.path("song.flac");
    std::filesystem::copy_file(QUORVEX_SAMPLES "/album/02 - Gulls over Slate.flac", song);
    const QString file = QString::fromStdString(song);
    // This platform is there, and no other.
    EXPECT_EQ(run({"-style", "fusion", "--jobs", "2", "--platform", "offscreen", file}, "no such display"),
              130)
        << error_;
    EXPECT_EQ(run({"--jobs", "2", "-style=fusion", "/tag:title=first", file}), 0) << error_;
    const std::string bytes = folder_.read("song.flac");
    EXPECT_NE(bytes.find("TITLE=first"), std::string::npos);
    // Behind a command, or without a value, nothing is an option of the toolkit, and no file is taken for its
    // value.
    for (const QStringList& wrong : {QStringList{"/tag:title=second", "-style", file, file},
                                     QStringList{"-style"}, QStringList{"-platform=offscreen", file}}) {
        EXPECT_EQ(run(wrong), 2);
        EXPECT_NE(error_.find("not expected"), std::string::npos) << error_;
        EXPECT_EQ(folder_.read("song.flac"), bytes);
    }
    EXPECT_EQ(run({"--", "-style"}), 2);
    EXPECT_NE(error_.find("Nothing to do"), std::string::npos) << error_;
}

} // namespace
} // namespace vantaro::test
