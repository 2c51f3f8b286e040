// How long the window stands still at most, with a list of 100,000 tracks, while it is filled, sorted,
// scrolled, and while everything in it is selected.
//
//     desktop_bench [tracks]
//
// Prints a line for each: how long it took, and the longest time in which no event was handled. Runs on the
// platform that needs no display.

#include "bench/event_gaps.h"
#include "vantaro/desktop/track_list.h"

#include <QApplication>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace vantaro::core {
namespace {

using bench::measure;

Ref<HeldInfo> made_up_tags(std::mt19937& random, int number) {
    const auto any = [&](unsigned below) { return std::to_string(random() % below); };
    TrackInfoRecord record;
    record.set_field("TITLE", ("The Song of " + any(1'000'000)).c_str());
    record.set_field("ARTIST", ("Artist " + any(900)).c_str());
    record.set_field("ALBUM", ("Album No. " + any(9000)).c_str());
    record.set_field("TRACKNUMBER", std::to_string(number % 20).c_str());
    record.set_field("DATE", std::to_string(1950 + random() % 75).c_str());
    record.set_field("GENRE", ("Genre " + any(30)).c_str());
    record.set_length(static_cast<double>(random() % 600));
    return make_service<HeldInfo>(record, FileStats{}, false);
}

int run(int count) {
    std::deque<Track> tracks;
    for (int i = 0; i < count; ++i)
        tracks.emplace_back("/music/" + std::to_string(i / 12) + "/" + std::to_string(i) + ".flac", 0U);
    TrackModel model([](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); });
    TrackList list(model, nullptr);
    list.resize(1200, 800);
    list.show();

    constexpr std::size_t batch_size = 5000;
    std::size_t added = 0;
    measure(
        "adding, 5,000 at a time", [] {},
        [&] {
            std::vector<Track*> batch;
            for (; batch.size() < batch_size && added < tracks.size(); ++added)
                batch.push_back(&tracks[added]);
            model.add(batch);
            return added == tracks.size();
        });
    std::atomic<bool> is_read = false;
    std::jthread reader;
    QTimer refresh;
    QObject::connect(&refresh, &QTimer::timeout, [&] { model.refresh(); });
    measure(
        "tags read, refreshing",
        [&] {
            refresh.start(100);
            reader = std::jthread([&] {
                std::mt19937 random(1);
                int number = 0;
                for (Track& track : tracks)
                    track.hold(made_up_tags(random, number++));
                is_read = true;
            });
        },
        [&] { return is_read.load(); });
    refresh.stop();
    for (const Column column : {Column::title, Column::album, Column::track_number, Column::length})
        measure((std::string("sorting by ") + column_info(column).heading).c_str(),
                [&] { list.sortByColumn(static_cast<int>(column), Qt::AscendingOrder); },
                [&] { return !model.is_sorting(); });
    int page = 0;
    measure(
        "scrolling, 300 places", [] {},
        [&] {
            list.verticalScrollBar()->setValue(static_cast<int>(page * 7919LL % count));
            return ++page == 300;
        });
    measure(
        "selecting all", [&] { list.selectAll(); }, [] { return true; });
    measure(
        "sorting with all selected",
        [&] { list.sortByColumn(static_cast<int>(Column::artist), Qt::AscendingOrder); },
        [&] { return !model.is_sorting(); });
    measure(
        "listing the selected tracks",
        [&] {
            if (list.selected_tracks().size() != tracks.size())
                std::abort();
        },
        [] { return true; });
    measure(
        "removing every tenth row",
        [&] {
            std::vector<int> rows;
            for (int row = 0; row < count; row += 10)
                rows.push_back(row);
            model.remove(rows);
        },
        [] { return true; });
    return 0;
}

} // namespace
} // namespace vantaro::core

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication qt(argc, argv);
    constexpr int usual_count = 100'000;
    return vantaro::core::run(argc > 1 ? std::max(1, std::atoi(argv[1])) : usual_count);
}
