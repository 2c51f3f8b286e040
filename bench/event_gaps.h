// How long a window stands still: what benchmarks of windows measure.
//
//     measure("scrolling", [&] { start(); }, [&] { return is_done(); });
#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace bench {

/// The longest time between two of the events that follow each other as fast as they can.
class LongestGap {
public:
    LongestGap() {
        QObject::connect(&timer_, &QTimer::timeout, [this] { note(); });
        timer_.start(0);
        since_last_.start();
    }
    void note() {
        longest_ = std::max(longest_, since_last_.nsecsElapsed());
        since_last_.start();
    }
    double milliseconds() const { return static_cast<double>(longest_) / 1e6; }

private:
    QTimer timer_;
    QElapsedTimer since_last_;
    qint64 longest_ = 0;
};

/// Starts something, handles events until it is done, and prints what it cost.
inline void measure(const char* what, const std::function<void()>& start,
                    const std::function<bool()>& is_done) {
    for (int i = 0; i < 10; ++i)
        QApplication::processEvents();
    QElapsedTimer time;
    LongestGap gap;
    time.start();
    start();
    do
        QApplication::processEvents();
    while (!is_done());
    QApplication::processEvents(); // what it has caused to be painted
    gap.note();
    std::printf("%-28s %8.1f ms, longest gap %6.1f ms\n", what,
                static_cast<double>(time.nsecsElapsed()) / 1e6, gap.milliseconds());
}

} // namespace bench
