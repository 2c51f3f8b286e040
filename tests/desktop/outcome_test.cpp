// What the window says without being asked: of runs that have ended, of tracks that cannot be read, and what
// names from elsewhere do to menus and tooltips.

#include "tests/desktop/desktop_fixture.h"
#include "vantaro/desktop/run_outcome.h"

#include <gmock/gmock.h>

#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QStatusBar>

#include <set>

namespace vantaro::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Notes what an update tells its caller.
class ToldOf final : public HeapService<UpdateNotify> {
public:
    void summarise(const char* text) override { told.emplace_back(text); }
    void get_activity(TextSink& out) override { set_text(out, "set a genre"); }
    void notify(std::uint32_t code) override { told.push_back("ended " + std::to_string(code)); }
    std::vector<std::string> told;
};

class Outcome : public WithDesktop {
protected:
    void run_on(int row) {
        TrackHandle* const track = &window_->model().track(row);
        host_.tag_io().update_async(&track, 1, make_service<SetGenre>(0).get(), host_.main_window(), 8,
                                    notify_.get());
        ASSERT_TRUE(wait_for_updates());
    }
    std::string status() const { return window_->statusBar()->currentMessage().toStdString(); }

    const Ref<ToldOf> notify_ = make_service<ToldOf>();
};

TEST_F(Outcome, OfARunIsTold) {
    load(album_);
    run_on(0);
    EXPECT_EQ(status(), "1 file changed. Ctrl+Z takes it back.");
    EXPECT_EQ(host_.runs().runs().front().start.activity, "set a genre");
    EXPECT_THAT(notify_->told, ElementsAre("1 file changed. Ctrl+Z takes it back.", "ended 0"));
    run_on(0);
    EXPECT_EQ(status(), "No files changed.");
    // The keys are looked up when they are told.
    folder_.write("config/shortcuts.json", R"({"{11111111-2222-3333-4444-555555555555}": "Ctrl+Z"})");
    open();
    load(album_);
    run_on(1);
    EXPECT_EQ(status(), "1 file changed. \"Undo last run\" in the menu takes it back.");
}

TEST_F(Outcome, IsTakenBackFromAComponentsWindow) {
    load(album_);
    run_on(0);
    QDialog component(window_.get());
    QDialog settings(&component);
    for (QDialog* dialog : {&component, &settings}) {
        dialog->show();
        dialog->activateWindow();
        ASSERT_TRUE(wait_for([&] { return dialog->isActiveWindow(); }));
        question_.answer = button::no;
        QTest::keyClick(dialog, Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(question_.asked.size(), 1U) << "not from a dialog of that window";
    }
}

TEST(OutcomeText, CountsInWords) {
    struct Row {
        UpdateReport report;
        const char* text;
    };
    const Row rows[] = {
        {{14, 12, 2, 0, false, 7, ""}, "12 files changed. Ctrl+Z takes it back."},
        {{14, 1, 12, 1, false, 7, ""}, "1 file changed, 1 failed. Ctrl+Z takes it back."},
        {{14, 5, 0, 2, true, 7, ""},
         "5 files changed, 2 failed before it was cancelled. Ctrl+Z takes it back."},
        {{14, 0, 14, 0, false, 0, ""}, "No files changed."},
        {{14, 0, 0, 14, false, 0, ""}, "No files changed, 14 failed."},
        {{14, 0, 0, 0, true, 0, ""}, "No files changed before it was cancelled."},
    };
    for (const Row& row : rows)
        EXPECT_EQ(outcome_text(row.report, QKeySequence("Ctrl+Z")).toStdString(), row.text);
}

TEST_F(Outcome, OfOpeningCountsWhatCannotBeRead) {
    const auto summary = [this] { return part<QLabel>("summary")->text().toStdString(); };
    folder_.write("album/<b>noise<i>.mp3", "no music");
    load(album_);
    EXPECT_TRUE(wait_for([&] { return summary().ends_with("  ·  1 unreadable"); })) << summary();
    const TrackModel& model = window_->model();
    std::string tip;
    for (int row = 0; row < model.rowCount(); ++row)
        tip += cell(row, Column::title, Qt::ToolTipRole);
    EXPECT_THAT(tip, HasSubstr("&lt;b&gt;noise&lt;i&gt;.mp3\n"));
    action("&Clear list")->trigger();
    EXPECT_TRUE(wait_for([&] { return summary().empty(); }));
}

/// Notes the tracks whose tags are said to be others.
class NotedChanges final : public TagChangeListener {
public:
    void tags_changed(TrackHandle* const* tracks, std::size_t count) override {
        EXPECT_TRUE(std::is_sorted(tracks, tracks + count, std::less<>()));
        paths.insert(tracks, tracks + count);
    }
    std::set<TrackHandle*> paths;
};

TEST_F(Outcome, ListenersHearOfTracksThatAreReadForTheFirstTime) {
    NotedChanges noted;
    host_.tag_io().add_change_listener(&noted);
    folder_.write("album/noise.mp3", "no music");
    load(album_);
    EXPECT_EQ(window_->model().rowCount(), 11);
    EXPECT_EQ(noted.paths.size(), 10U) << "not of those that cannot be read";
    host_.tag_io().remove_change_listener(&noted);
}

TEST(Menu, KeepsItsWidthWhateverTheNames) {
    const std::string name = "First & " + std::string(500, 'm') + " <b>last";
    MenuCommand saved;
    saved.menus = {std::string(500, 's')};
    saved.name = name;
    saved.description = "Runs a tag editing script : \"" + name + '"';
    MenuCommand other;
    other.name = name;
    QMenu menu;
    fill_menu(menu, {saved, other}, ShortcutTable(), [](const MenuCommand&) {});
    EXPECT_LT(menu.sizeHint().width(), 80 * menu.fontMetrics().averageCharWidth());
    const QList<QAction*> entries = menu.actions();
    ASSERT_EQ(entries.size(), 2);
    const QAction& script = *entries[0]->menu()->actions()[0];
    EXPECT_LT(entries[0]->menu()->sizeHint().width(), 80 * menu.fontMetrics().averageCharWidth());
    EXPECT_TRUE(script.text().startsWith("First && m") && script.text().endsWith("m <b>last"))
        << script.text().toStdString();
    for (const QAction* entry : {&script, static_cast<const QAction*>(entries[1])})
        EXPECT_THAT(entry->toolTip().remove(QChar(0x200B)).toStdString(),
                    HasSubstr("First &amp; " + std::string(500, 'm') + " &lt;b&gt;last"));
}

} // namespace
} // namespace vantaro::test
