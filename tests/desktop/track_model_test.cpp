#include "vantaro/desktop/track_model.h"

#include <gtest/gtest.h>

#include <QTest>

#include <deque>
#include <string>
#include <vector>

namespace vantaro::test {
namespace {

using namespace vantaro::core;

class Model : public testing::Test {
protected:
    Track& add(const std::string& name, std::vector<TrackField> fields, double length = 0) {
        Track& track = tracks_.emplace_back("/m/" + name, 0U);
        TrackInfoRecord record;
        record.set_fields(std::move(fields));
        record.set_length(length);
        track.hold(make_service<HeldInfo>(record, FileStats{}, false));
        model_.add({&track});
        return track;
    }
    /// File names from the first row on.
    std::string order() const {
        std::string names;
        for (int row = 0; row < model_.rowCount(); ++row)
            names += cell(row, Column::file_name);
        return names;
    }
    std::string cell(int row, Column column) const {
        return model_.data(model_.index(row, static_cast<int>(column)), Qt::DisplayRole)
            .toString()
            .toStdString();
    }
    std::string sorted(Column column, Qt::SortOrder direction) {
        model_.sort(static_cast<int>(column), direction);
        EXPECT_TRUE(QTest::qWaitFor([this] { return !model_.is_sorting(); }));
        return order();
    }

    std::deque<Track> tracks_;
    TrackModel model_{[](const std::string& line) { ADD_FAILURE() << line; }};
};

TEST_F(Model, SortsNumbersAsNumbersAndTextsAsPeopleDo) {
    add("a", {{"TITLE", {"Track 10"}}, {"TRACKNUMBER", {"10"}}, {"DATE", {"1999-05"}}}, 7);
    add("b", {{"TITLE", {"track 9"}}, {"TRACKNUMBER", {"9/12"}}, {"DATE", {"1999"}}}, 3601);
    add("c", {{"TRACKNUMBER", {"A2"}}}, 60);
    add("d", {{"TITLE", {"élan"}}, {"TRACKNUMBER", {"09"}}, {"DATE", {"2001"}}}, 60);
    add("e", {{"TITLE", {"Alpha", "Beta"}}});
    struct Row {
        Column column;
        Qt::SortOrder direction;
        const char* order;
    };
    const Row rows[] = {
        {Column::title, Qt::AscendingOrder, "cedba"},
        {Column::title, Qt::DescendingOrder, "abdec"},
        // What is equal stays as it was, in both directions.
        {Column::track_number, Qt::AscendingOrder, "ecbda"},
        {Column::track_number, Qt::DescendingOrder, "abdce"},
        {Column::date, Qt::AscendingOrder, "cebad"},
        {Column::length, Qt::AscendingOrder, "eacdb"},
        {Column::length, Qt::DescendingOrder, "bcdae"},
        {Column::file_name, Qt::AscendingOrder, "abcde"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(column_info(row.column).heading);
        model_.sort(-1, Qt::AscendingOrder);
        EXPECT_EQ(sorted(row.column, row.direction), row.order);
    }
    sorted(Column::title, Qt::DescendingOrder);
    model_.sort(-1, Qt::AscendingOrder);
    EXPECT_EQ(order(), "abcde");
}

TEST_F(Model, ShowsNamesThatAreNotUtf8) {
    const Track track("/M\xC3\xBCsik/caf\xE9.flac", 0);
    EXPECT_EQ(cell_text(Column::file_name, track).toStdString(), "caf\u00E9.flac");
    EXPECT_EQ(cell_text(Column::folder, track).toStdString(), "/M\u00FCsik");
}

TEST_F(Model, ShowsAValueOnOneLine) {
    struct Row {
        TrackField field;
        Column column;
        std::string shown;
    };
    const Row rows[] = {
        {{"ARTIST", {"a", "b"}}, Column::artist, "a; b"},
        {{"comment", {"one\r\ntwo\tthree"}}, Column::comment, "one  two three"},
        {{"ALBUMARTIST", {"x"}}, Column::album_artist, "x"},
        {{"TITLE", {std::string(5000, 'x')}}, Column::title, std::string(400, 'x')},
    };
    for (const Row& row : rows) {
        model_.clear();
        add("a", {row.field});
        EXPECT_EQ(cell(0, row.column), row.shown);
    }
    EXPECT_EQ(duration_text(59.6).toStdString(), "1:00");
    EXPECT_EQ(duration_text(3725).toStdString(), "1:02:05");
    EXPECT_EQ(duration_text(1e300).toStdString(), "277777:46:40");
}

TEST_F(Model, KeepsPlacesWhenRowsMoveOrGo) {
    for (int i = 0; i < 400; ++i)
        add(std::to_string(i) + " ", {{"TRACKNUMBER", {std::to_string(400 - i)}}});
    const QPersistentModelIndex place = model_.index(7, 0);
    Track& track = model_.track(7);
    model_.sort(static_cast<int>(Column::track_number), Qt::AscendingOrder);
    // Rows that come or go while the order is being found.
    add("x", {});
    model_.remove({0, 1});
    ASSERT_TRUE(QTest::qWaitFor([this] { return !model_.is_sorting(); }));
    ASSERT_TRUE(place.isValid());
    EXPECT_EQ(&model_.track(place.row()), &track);
    EXPECT_EQ(cell(0, Column::file_name), "x"); // no number comes first
    EXPECT_EQ(cell(1, Column::file_name), "399 ");

    std::vector<int> every_other;
    for (int row = 0; row < model_.rowCount(); row += 2)
        every_other.push_back(row);
    Track& kept = model_.track(1);
    Track& gone = model_.track(2);
    model_.remove(every_other);
    EXPECT_EQ(model_.rowCount(), 199);
    EXPECT_EQ(&model_.track(0), &kept);
    EXPECT_TRUE(model_.add({&kept}).empty());
    EXPECT_EQ(model_.add({&gone, &gone}).size(), 1U);
}

} // namespace
} // namespace vantaro::test
