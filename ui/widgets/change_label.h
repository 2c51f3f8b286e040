// ChangeLabel: what the editor says below its list of tracks: how many of them change, or what a run has
// done.
//
//     ChangeLabel label(controls.get<QLabel>(editor_control::change_count), [&] { go_to_next_change(); });
//     label.show_count(counter);
//     label.show_outcome("12 files changed. Ctrl+Z takes it back.");
//
// Shows as much as there is room for; the tooltip has all of it. Main thread.
#pragma once

#include "ui/widgets/change_counter.h"

#include <QLabel>

namespace quorvex {

class ChangeLabel final : public QObject {
public:
    /// `label` outlives this. `clicked` is called when it is clicked.
    ChangeLabel(QLabel& label, std::function<void()> clicked);

    void show_count(const ChangeCounter& counter);
    /// Some sentences. They stay in place of the count until forget_outcome().
    void show_outcome(const QString& text);
    /// Shows the count again, as it was shown last.
    void forget_outcome();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void update();
    void fit();

    QLabel& label_;
    const std::function<void()> clicked_;
    QString outcome_;
    /// The longest first.
    QStringList count_texts_;
    bool leads_on_ = false;
};

} // namespace quorvex
