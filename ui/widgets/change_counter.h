// ChangeCounter: counts the tracks that a script changes, a few at a time between events, so that a window
// with a million of them stays quick.
//
//     ChangeCounter counter(rows, script, [&](const ChangeCounter& now) { label.setText(...); });
//     counter.restart();
//
// Main thread.
#pragma once

#include "ui/widgets/preview_model.h"

#include <QTimer>

namespace quorvex {

class ChangeCounter {
public:
    using Report = std::function<void(const ChangeCounter& counter)>;

    /// `report` is called as the count goes on, at most once for every slice of work.
    ChangeCounter(PreviewRows& rows, std::function<PreviewedScript()> script, Report report);

    /// Counts anew, soon.
    void restart();
    void stop() { timer_.stop(); }

    std::size_t changed() const { return changed_; }
    std::size_t counted() const { return next_; }
    std::size_t total() const { return rows_.tracks().size(); }

private:
    void count_some();

    PreviewRows& rows_;
    const std::function<PreviewedScript()> script_;
    const Report report_;
    QTimer timer_;
    std::size_t next_ = 0;
    std::size_t changed_ = 0;
};

} // namespace quorvex
