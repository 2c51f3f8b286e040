#include "tests/desktop/desktop_fixture.h"

#include <gmock/gmock.h>

#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QUrl>

#include <numeric>

namespace vantaro::test {
namespace {

using testing::HasSubstr;

class Loading : public WithDesktop {
protected:
    void drop(const QList<QUrl>& urls) {
        QMimeData data;
        data.setUrls(urls);
        // Who drops has entered before.
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window_->list().viewport(), &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent event(QPointF(5, 5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(window_->list().viewport(), &event);
    }
    std::string summary() const { return part<QLabel>("summary")->text().toStdString(); }
};

TEST_F(Loading, ShowsEachTrackOnce) {
    load(album_);
    EXPECT_EQ(window_->model().rowCount(), 10);
    EXPECT_EQ(cell(0, Column::title), "Morning Tide");
    EXPECT_EQ(cell(4, Column::format), "AAC");
    EXPECT_EQ(cell(4, Column::folder), album_);
    load(album_);
    load(album_ + "/Album.m3u8");
    drop({QUrl::fromLocalFile(QString::fromStdString(album_))});
    ASSERT_TRUE(wait_for([this] { return !window_->loader().is_busy(); }));
    EXPECT_EQ(window_->model().rowCount(), 10);
    ASSERT_TRUE(wait_for([this] { return summary().starts_with("10 tracks"); })) << summary();

    window_->list().selectAll();
    ASSERT_TRUE(wait_for([this] { return summary().starts_with("10 of 10 tracks selected"); }));
    select(3);
    action("&Remove from list")->trigger();
    EXPECT_EQ(window_->model().rowCount(), 9);
    EXPECT_EQ(window_->list().currentIndex().row(), 3);
    action("&Clear list")->trigger();
    EXPECT_EQ(window_->model().rowCount(), 0);
    load(album_ + "/Album.m3u8");
    EXPECT_EQ(window_->model().rowCount(), 10);
}

TEST_F(Loading, TakesDroppedNamesThatAreNotUtf8) {
    const std::string name = folder_.path("odd") + "/a\xff b%41.mp3";
    folder_.make_folder("odd");
    std::filesystem::copy(album_ + "/01 - Morning Tide.mp3", name);
    drop({QUrl::fromEncoded("file://" + QByteArray::fromStdString(folder_.path("odd"))
                            + "/a%FF%20b%2541.mp3")});
    ASSERT_TRUE(wait_for_updates());
    ASSERT_EQ(window_->model().rowCount(), 1);
    EXPECT_EQ(window_->model().track(0).path(), name);
    EXPECT_EQ(cell(0, Column::title), "Morning Tide");
}

TEST_F(Loading, TellsWhatCannotBeRead) {
    load(folder_.write("noise.mp3", "no music"));
    EXPECT_EQ(cell(0, Column::file_name), "noise.mp3");
    EXPECT_EQ(cell(0, Column::title), "");
    EXPECT_EQ(cell(0, Column::format), "unreadable");
    EXPECT_THAT(cell(0, Column::title, Qt::ToolTipRole), HasSubstr("noise.mp3\n"));
    const TrackModel& model = window_->model();
    EXPECT_TRUE(model.data(model.index(0, 0), Qt::ForegroundRole).isValid());
    load(album_ + "/01 - Morning Tide.mp3");
    EXPECT_FALSE(model.data(model.index(1, 0), Qt::ForegroundRole).isValid());
    load(folder_.path("missing"));
    EXPECT_EQ(model.rowCount(), 2);
}

TEST_F(Loading, NoticesFilesThatOthersHaveChanged) {
    load(album_);
    std::filesystem::copy_file(album_ + "/06 - Lantern Room.mp3", album_ + "/01 - Morning Tide.mp3",
                               std::filesystem::copy_options::overwrite_existing);
    std::filesystem::remove(album_ + "/02 - Gulls over Slate.flac");
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(wait_for([&] { return other.isActiveWindow(); }));
    EXPECT_EQ(cell(0, Column::title), "Morning Tide");
    window_->activateWindow();
    EXPECT_TRUE(wait_for([this] { return cell(0, Column::title) == "Lantern Room"; }));
    EXPECT_TRUE(wait_for([this] { return !cell(1, Column::title, Qt::ToolTipRole).empty(); }));
    EXPECT_EQ(cell(2, Column::title), "Rope and Tar");
}

TEST_F(Loading, ReadsWhatACancelLeftUnread) {
    folder_.make_folder("many");
    for (int i = 0; i < 600; ++i)
        std::filesystem::create_symlink(album_ + "/03 - Rope and Tar.ogg",
                                        folder_.path("many/" + std::to_string(i) + ".ogg"));
    const auto unread = [this] {
        std::vector<int> rows(static_cast<std::size_t>(window_->model().rowCount()));
        std::iota(rows.begin(), rows.end(), 0);
        return std::ranges::count_if(rows, [&](int row) { return !window_->model().track(row).held(); });
    };
    window_->add({folder_.path("many")});
    ASSERT_TRUE(wait_for([this] { return window_->model().rowCount() > 0; }));
    bool is_done = false;
    window_->loader().read({&window_->model().track(0)}, [&] { is_done = true; });
    EXPECT_TRUE(window_->loader().cancel()) << "something was to follow";
    ASSERT_TRUE(wait_for([this] { return !window_->loader().is_busy(); }));
    EXPECT_FALSE(is_done);
    EXPECT_GT(unread(), 0);
    load(folder_.path("many"));
    EXPECT_EQ(window_->model().rowCount(), 600);
    EXPECT_EQ(unread(), 0);
}

using Keys = WithDesktop;

TEST_F(Keys, OfTheListAreNotTheConsoles) {
    load(album_);
    part<QDockWidget>("console")->show();
    window_->activateWindow();
    ASSERT_TRUE(wait_for([this] { return window_->isActiveWindow(); }));
    auto* console = part<QDockWidget>("console")->findChild<QPlainTextEdit*>();
    select(0);
    console->setFocus();
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_Delete})
        QTest::keyClick(console, key, key == Qt::Key_A ? Qt::ControlModifier : Qt::NoModifier);
    EXPECT_EQ(window_->model().rowCount(), 10);
    EXPECT_EQ(window_->list().selected_count(), 1U);
    window_->list().setFocus();
    ASSERT_TRUE(wait_for([this] { return action("&Remove from list")->isEnabled(); }));
    QTest::keyClick(&window_->list(), Qt::Key_Delete);
    EXPECT_EQ(window_->model().rowCount(), 9);
}

using Remembering = WithDesktop;

TEST_F(Remembering, LooksAsWhenItWasClosed) {
    folder_.write("config/other.cfg", "mine");
    QHeaderView* header = window_->list().header();
    header->moveSection(header->visualIndex(static_cast<int>(Column::genre)), 0);
    header->resizeSection(static_cast<int>(Column::album), 333);
    window_->list().setColumnHidden(static_cast<int>(Column::comment), false);
    window_->list().setColumnHidden(static_cast<int>(Column::title), true);
    window_->list().sortByColumn(static_cast<int>(Column::date), Qt::DescendingOrder);
    part<QDockWidget>("console")->show();
    window_->resize(777, 444);
    open();
    header = window_->list().header();
    EXPECT_EQ(header->logicalIndex(0), static_cast<int>(Column::genre));
    EXPECT_EQ(header->sectionSize(static_cast<int>(Column::album)), 333);
    EXPECT_FALSE(header->isSectionHidden(static_cast<int>(Column::comment)));
    EXPECT_TRUE(header->isSectionHidden(static_cast<int>(Column::title)));
    EXPECT_EQ(header->sortIndicatorSection(), static_cast<int>(Column::date));
    EXPECT_EQ(header->sortIndicatorOrder(), Qt::DescendingOrder);
    EXPECT_FALSE(part<QDockWidget>("console")->isHidden());
    EXPECT_EQ(window_->size(), QSize(777, 444));
    EXPECT_EQ(folder_.read("config/other.cfg"), "mine");
    load(album_);
    EXPECT_EQ(cell(0, Column::date), "2019-05-17");
}

TEST_F(Remembering, MakesDoWithAFileThatSaysNonsense) {
    for (const char* text : {"", "\xff\xfe[[[", "[columns]\norder=nosuch:1:shown\nsort=nosuch\n",
                             "[columns]\norder=title:-5:hidden, album:999999999:hidden\n",
                             "[window]\ngeometry=x\npanels=@ByteArray(\\xff)\n"}) {
        SCOPED_TRACE(text);
        close_window();
        folder_.write("config/window.ini", text);
        open();
        EXPECT_GT(window_->width(), 100);
        window_->list().setColumnWidth(static_cast<int>(Column::genre), 123);
        open();
        EXPECT_EQ(window_->list().columnWidth(static_cast<int>(Column::genre)), 123);
        EXPECT_LT(window_->list().header()->hiddenSectionCount(), static_cast<int>(column_count));
        EXPECT_LT(window_->list().columnWidth(static_cast<int>(Column::album)), 6000);
    }
}

using Columns = WithDesktop;

TEST_F(Columns, LeaveOneAtLeast) {
    QMenu* view = nullptr;
    for (QMenu* menu : window_->findChildren<QMenu*>())
        if (menu->title() == "&Columns")
            view = menu;
    ASSERT_NE(view, nullptr);
    const auto open_menu = [&] { emit view->aboutToShow(); };
    open_menu();
    for (const ColumnInfo& column : all_columns()) {
        open_menu();
        for (QAction* entry : view->actions())
            if (entry->text() == QLatin1String(column.heading) && entry->isChecked() && entry->isEnabled())
                entry->trigger();
    }
    EXPECT_EQ(window_->list().header()->hiddenSectionCount(), static_cast<int>(column_count) - 1);
    open_menu();
    view->actions().back()->trigger();
    EXPECT_FALSE(window_->list().isColumnHidden(static_cast<int>(Column::title)));
}

} // namespace
} // namespace vantaro::test
