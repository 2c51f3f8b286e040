// The progress of an update and the report at its end, with updates that really run.

#include "tests/support/temporary_folder.h"
#include "tests/windows/window_access.h"
#include "vantaro/windows/update_report_window.h"
#include "vantaro/windows/update_window.h"

#include <QClipboard>
#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QTreeView>

#include <filesystem>
#include <latch>
#include <thread>

namespace vantaro::core {
namespace {

using test::find_window;

/// Sets a title; the first track waits until the test lets it go.
class Retitle final : public HeapService<TrackFilter> {
public:
    bool apply(TrackHandle*, const FileStats&, TrackInfo& info) override {
        if (go)
            go->wait();
        info.set_field("TITLE", "New");
        return true;
    }
    std::latch* go = nullptr;
};

class Ended final : public HeapService<CompletionNotify> {
public:
    void notify(std::uint32_t code) override { codes.push_back(code); }
    std::vector<std::uint32_t> codes;
};

bool says(const QWidget& window, const QString& text) {
    return std::ranges::any_of(window.findChildren<QLabel*>(),
                               [&](const QLabel* label) { return label->text().contains(text); });
}

class UpdateWindow : public testing::Test {
protected:
    ~UpdateWindow() override { qDeleteAll(reports()); }

    void add(const std::string& name, bool exists) {
        if (exists)
            std::filesystem::copy_file(std::filesystem::path(QUORVEX_SAMPLES)
                                           / "album/02 - Gulls over Slate.flac",
                                       folder.path(name));
        list.push_back(&tracks.get(folder.path(name), 0));
    }
    void start() {
        tag_io.start_update(list, *filter,
                            make_update_window(parent.get(), list.size(), {"Updating", "updated"}),
                            ended.get());
    }
    void wait_for_end() {
        main_thread.run_until([&] { return tag_io.is_idle(); });
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    static QList<QWidget*> reports() {
        QList<QWidget*> found;
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->windowTitle() == "Files That Failed" || window->windowTitle().startsWith("Problem"))
                found.push_back(window);
        return found;
    }

    test::TemporaryFolder folder;
    RunStore runs{folder.path("runs"), real_system_calls()};
    TrackTable tracks;
    MainThread main_thread{[](const std::string&) {}};
    AbortSignal interrupt;
    TagIO tag_io{tracks, main_thread, interrupt, runs, 2, {}, [](const std::string&) {}};
    std::unique_ptr<QWidget> parent = std::make_unique<QWidget>();
    std::vector<Track*> list;
    Ref<Retitle> filter = make_service<Retitle>();
    Ref<Ended> ended = make_service<Ended>();
};

TEST_F(UpdateWindow, AShortUpdateThatGoesWellShowsNothing) {
    add("a.flac", true);
    bool was_seen = false;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] { was_seen |= find_window("Updating") != nullptr; });
    look.start(5);
    start();
    wait_for_end();
    EXPECT_FALSE(was_seen);
    EXPECT_EQ(reports().size(), 0);
    EXPECT_EQ(ended->codes, std::vector<std::uint32_t>{update_result::completed});
    EXPECT_EQ(parent->findChildren<QDialog*>().size(), 0);
}

TEST_F(UpdateWindow, CancelEndsTheUpdate) {
    for (int i = 0; i < 200; ++i)
        add(std::to_string(i) + ".flac", true);
    std::latch go(1);
    filter->go = &go;
    start();
    ASSERT_TRUE(QTest::qWaitFor([] { return find_window("Updating") != nullptr; }));
    QWidget& window = *find_window("Updating");
    ASSERT_TRUE(QTest::qWaitFor([&] { return says(window, "0 of 200"); }));
    test::press(window, "Cancel");
    EXPECT_TRUE(says(window, "finishing the files that were begun"));
    EXPECT_FALSE(test::button(window, "Cancel").isEnabled());
    go.count_down();
    wait_for_end();
    EXPECT_EQ(ended->codes, std::vector<std::uint32_t>{update_result::aborted});
    EXPECT_EQ(find_window("Updating"), nullptr);
    EXPECT_EQ(reports().size(), 0);
}

TEST_F(UpdateWindow, TakesTheKeyboardFromAWindowThatWaitsForIt) {
    add("a.flac", true);
    std::latch go(1);
    filter->go = &go;
    parent->show();
    parent->setEnabled(false);
    parent->activateWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return parent->isActiveWindow(); }));
    start();
    ASSERT_TRUE(QTest::qWaitFor([] { return find_window("Updating") != nullptr; }));
    QWidget& window = *find_window("Updating");
    EXPECT_FALSE(window.testAttribute(Qt::WA_ShowWithoutActivating));
    ASSERT_TRUE(QTest::qWaitFor([&] { return window.isActiveWindow(); }));
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(says(window, "finishing the files that were begun"));
    go.count_down();
    wait_for_end();
    EXPECT_TRUE(QTest::qWaitFor([&] { return parent->isActiveWindow(); }));

    // Beside one that goes on working it stays in the background.
    std::latch go_again(1);
    filter->go = &go_again;
    parent->setEnabled(true);
    start();
    ASSERT_TRUE(QTest::qWaitFor([] { return find_window("Updating") != nullptr; }));
    EXPECT_TRUE(find_window("Updating")->testAttribute(Qt::WA_ShowWithoutActivating));
    go_again.count_down();
    wait_for_end();
}

TEST_F(UpdateWindow, ListsWhatFailed) {
    add("good.flac", true);
    add("a\nb.flac", false);
    folder.write("noise.mp3", "no music");
    add("noise.mp3", false);
    start();
    wait_for_end();
    QWidget* window = find_window("Files That Failed");
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(says(*window, "1 of 3 files updated, 2 failed."));
    test::press(*window, "Copy all");
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(),
              "1 of 3 files updated, 2 failed.\n" + folder.path("a_b.flac") + "\tFile not found\n"
                  + folder.path("noise.mp3") + "\tThe first frame of MPEG audio is missing\n");
    const QPointer<QWidget> guard(window);
    test::press(*window, "Close");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(guard);
}

TEST_F(UpdateWindow, TheParentMayGoMeanwhile) {
    parent->show();
    add("missing.flac", false);
    add("good.flac", true);
    std::latch go(1);
    filter->go = &go;
    start();
    ASSERT_TRUE(QTest::qWaitFor([] { return find_window("Updating") != nullptr; }));
    parent.reset();
    EXPECT_EQ(find_window("Updating"), nullptr);
    go.count_down();
    wait_for_end();
    EXPECT_EQ(ended->codes, std::vector<std::uint32_t>{update_result::completed_with_errors});
    ASSERT_EQ(reports().size(), 1);
    EXPECT_TRUE(reports().front()->isVisible());
    EXPECT_EQ(reports().front()->parentWidget(), nullptr);
}

TEST_F(UpdateWindow, ShowsHowFarItIsUntilItsWatcherGoes) {
    Track& track =
        tracks.get("/music/a name that is long enough to be cut somewhere in the middle, as names of "
                   "files sometimes are when whole titles go into them.flac",
                   0);
    constexpr std::size_t total = 300'000;
    auto watcher = make_update_window(nullptr, total, {"Reading", "read"});
    std::jthread job([&] {
        TrackOutcome outcome;
        outcome.track = &track;
        for (std::size_t i = 1; i <= total / 2; ++i)
            watcher->on_track(outcome, i, total);
    });
    job.join();
    ASSERT_TRUE(QTest::qWaitFor([] { return find_window("Reading") != nullptr; }));
    QWidget& window = *find_window("Reading");
    EXPECT_EQ(test::child<QProgressBar>(window).value(), 500);
    EXPECT_TRUE(
        says(window, QString("%1 of %2").arg(QLocale().toString(150'000), QLocale().toString(300'000))));
    const int width = window.width();
    ASSERT_TRUE(QTest::qWaitFor([&] { return says(window, "a name") && says(window, "them.flac"); }));
    EXPECT_EQ(window.width(), width);
    EXPECT_FALSE(says(window, "middle"));
    watcher.reset(); // the host ends
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(find_window("Reading"), nullptr);
}

TEST(UpdateReport, ThousandsOfRowsTakeNoTime) {
    std::vector<FailedFile> failed(200'000, {"/music/some/folder/some file.flac", "Access denied"});
    UpdateReport report;
    report.total = report.failed = failed.size();
    QElapsedTimer time;
    time.start();
    show_update_report(report, "updated", std::move(failed), nullptr);
    QWidget* window = find_window("Files That Failed");
    ASSERT_TRUE(window && QTest::qWaitForWindowExposed(window));
    test::child<QTreeView>(*window).scrollToBottom();
    window->grab();
    EXPECT_LT(time.elapsed(), 3000);
    EXPECT_EQ(test::child<QTreeView>(*window).model()->rowCount(), 200'000);
    delete window;
}

TEST(UpdateReport, SumsUp) {
    struct Row {
        UpdateReport report;
        const char* text;
    };
    const Row rows[] = {
        {{14, 12, 0, 2, false, 1, ""}, "12 of 14 files updated, 2 failed"},
        {{14, 10, 2, 2, false, 1, ""}, "10 of 14 files updated, 2 unchanged, 2 failed"},
        {{1, 0, 0, 1, false, 0, ""}, "1 of 1 file failed"},
        {{5, 0, 3, 2, false, 0, ""}, "2 of 5 files failed"},
        {{9, 3, 0, 1, true, 1, ""},
         "3 of 9 files updated, 1 failed, 5 not touched, because it was cancelled"},
        {{2, 2, 0, 0, false, 1, "disk"}, "2 of 2 files updated"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(update_summary(row.report, "updated"), row.text);
}

} // namespace
} // namespace vantaro::core
