#include "ui/widgets/change_counter.h"

#include "engine/change_text.h"
#include "host/access.h"

#include <QElapsedTimer>

namespace quorvex {

namespace {

constexpr int slice_ms = 8;
/// A burst of changes is counted once, after it.
constexpr int pause_ms = 150;

} // namespace

ChangeCounter::ChangeCounter(PreviewRows& rows, std::function<PreviewedScript()> script, Report report)
    : rows_(rows), script_(std::move(script)), report_(std::move(report)) {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { count_some(); });
}

void ChangeCounter::restart() {
    next_ = 0;
    changed_ = 0;
    timer_.start(pause_ms);
}

void ChangeCounter::count_some() {
    timer_.setInterval(0);
    QElapsedTimer clock;
    clock.start();
    const PreviewedScript now = script_();
    const ConsoleSilence silence;
    // A script without actions changes nothing, whatever the tracks.
    if (now.script.empty())
        next_ = total();
    for (; next_ < total() && clock.elapsed() < slice_ms; ++next_)
        changed_ += rows_.output(now.script, next_, now.skipped) != no_changes;
    if (next_ == total())
        timer_.stop();
    report_(*this);
}

} // namespace quorvex
