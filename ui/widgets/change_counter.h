// ChangeCounter: finds out which tracks a script changes, a few at a time between events, so that a window
// with a million of them stays quick.
//
//     ChangeCounter counter(rows, script, [&](const ChangeCounter& now) { label.setText(...); });
//     counter.restart();
//     counter.find_next(row, [&](std::size_t next) { go_to(next); });
//
// Main thread.
#pragma once

#include "ui/widgets/preview_model.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTimer>

#include <optional>
#include <vector>

namespace quorvex {

class ChangeCounter {
public:
    using Report = std::function<void(const ChangeCounter& counter)>;
    using Found = std::function<void(std::size_t row)>;

    /// `report` is called as the count goes on, at most once for every slice of work.
    ChangeCounter(PreviewRows& rows, std::function<PreviewedScript()> script, Report report);

    /// Counts anew, soon.
    void restart();
    /// Counts one row anew: its tags are different ones.
    void recount(std::size_t row);
    /// What the script does may be different although it is the same, as time goes by. The numbers are
    /// brought up to date once the count under way is done, however often this is called, and without keeping
    /// the machine busy.
    void refresh();
    /// Leaves the script's actions alone until resume(), which counts anew.
    void pause();
    void resume();
    void stop() { timer_.stop(); }

    /// Calls `found` with the next row below `row` that changes, from the end on from the first; never when
    /// there is none, or when the script changes or another search begins before.
    void find_next(std::size_t row, Found found);

    std::size_t changed() const { return changed_; }
    std::size_t counted() const { return counted_; }
    std::size_t total() const { return rows_.tracks().size(); }

private:
    struct Search {
        std::size_t next;
        std::size_t left;
        Found found;
    };
    using Known = std::optional<Effect>;

    void start_timer(qint64 milliseconds);
    void work();
    bool is_pass_done() const { return next_ >= effects_.size(); }
    /// Tries the script on a row.
    void judge(std::size_t row, const PreviewedScript& now);
    void forget(std::size_t row);
    /// One step; false when there is nothing left to do.
    bool step(const PreviewedScript& now);
    std::optional<std::size_t> step_search(const PreviewedScript& now);

    PreviewRows& rows_;
    const std::function<PreviewedScript()> script_;
    const Report report_;
    QTimer timer_;
    bool is_paused_ = false;
    /// Of each row, as far as it is known; what follows are sums of it.
    std::vector<Known> effects_;
    std::size_t counted_ = 0;
    std::size_t changed_ = 0;

    /// A pass goes over all rows. The first tries those that are not known, a later one tries all again.
    std::size_t next_ = 0;
    bool tries_again_ = false;
    bool is_stale_ = false;
    QElapsedTimer pass_time_;
    /// When the next pass may begin that nobody has asked for.
    QDeadlineTimer rest_;
    std::optional<Search> search_;
};

} // namespace quorvex
