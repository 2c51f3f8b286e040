#include "ui/widgets/change_counter.h"

#include <algorithm>
#include <limits>

namespace quorvex {

namespace {

// In milliseconds.
constexpr int slice_time = 8;
/// A burst of changes is counted once, after it.
constexpr int pause_time = 150;
/// Between two passes that nobody has asked for, this many times the time of one.
constexpr qint64 rest_factor = 9;

} // namespace

ChangeCounter::ChangeCounter(PreviewRows& rows, std::function<PreviewedScript()> script, Report report)
    : rows_(rows), script_(std::move(script)), report_(std::move(report)) {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { work(); });
}

void ChangeCounter::start_timer(qint64 milliseconds) {
    constexpr qint64 most = std::numeric_limits<int>::max();
    if (!is_paused_)
        timer_.start(static_cast<int>(std::min(milliseconds, most)));
}

void ChangeCounter::restart() {
    effects_.assign(total(), std::nullopt);
    counted_ = changed_ = next_ = 0;
    tries_again_ = is_stale_ = false;
    search_.reset();
    pass_time_.invalidate();
    rest_ = QDeadlineTimer();
    start_timer(pause_time);
}

void ChangeCounter::recount(std::size_t row) {
    forget(row);
    const bool was_done = is_pass_done();
    next_ = std::min(next_, row);
    if (was_done) {
        pass_time_.invalidate();
        start_timer(pause_time);
    }
}

void ChangeCounter::refresh() {
    if (!std::exchange(is_stale_, true) && is_pass_done())
        start_timer(rest_.remainingTime());
}

void ChangeCounter::pause() {
    is_paused_ = true;
    search_.reset();
    timer_.stop();
}

void ChangeCounter::resume() {
    is_paused_ = false;
    restart();
}

void ChangeCounter::find_next(std::size_t row, Found found) {
    if (is_paused_ || effects_.empty())
        return;
    search_ = Search{(row + 1) % total(), total(), std::move(found)};
    work();
}

void ChangeCounter::judge(std::size_t row, const PreviewedScript& now) {
    forget(row);
    const Effect effect = rows_.effect(now.script, row, now.skipped);
    effects_[row] = effect;
    ++counted_;
    changed_ += effect == Effect::change;
}

void ChangeCounter::forget(std::size_t row) {
    if (!effects_[row])
        return;
    --counted_;
    changed_ -= effects_[row] == Effect::change;
    effects_[row].reset();
}

std::optional<std::size_t> ChangeCounter::step_search(const PreviewedScript& now) {
    const std::size_t row = search_->next;
    if (!effects_[row])
        judge(row, now);
    if (effects_[row] == Effect::change)
        return row;
    search_->next = (row + 1) % total();
    if (--search_->left == 0)
        search_.reset();
    return std::nullopt;
}

bool ChangeCounter::step(const PreviewedScript& now) {
    if (is_pass_done())
        return false;
    if (tries_again_ || !effects_[next_])
        judge(next_, now);
    ++next_;
    return true;
}

void ChangeCounter::work() {
    timer_.setInterval(0);
    QElapsedTimer clock;
    clock.start();
    const PreviewedScript now = script_();
    if (is_pass_done() && is_stale_ && rest_.hasExpired()) {
        next_ = 0;
        tries_again_ = true;
        is_stale_ = false;
        pass_time_.invalidate();
    }
    const bool was_done = is_pass_done();
    if (!pass_time_.isValid())
        pass_time_.start();
    // A script without actions changes nothing, whatever the tracks.
    if (now.script.empty()) {
        std::ranges::fill(effects_, Effect::none);
        counted_ = next_ = total();
        changed_ = 0;
    }
    std::optional<std::size_t> found;
    bool is_working = true;
    while (is_working && !found && clock.elapsed() < slice_time) {
        if (search_)
            found = step_search(now);
        else
            is_working = step(now);
    }
    if (is_pass_done()) {
        if (!was_done)
            rest_.setRemainingTime(pass_time_.elapsed() * rest_factor);
        tries_again_ = false;
        if (is_stale_)
            start_timer(rest_.remainingTime());
        else
            timer_.stop();
    }
    if (search_)
        start_timer(0);
    report_(*this);
    // The last thing done: it may begin another search.
    if (found)
        std::exchange(search_, std::nullopt)->found(*found);
}

} // namespace quorvex
