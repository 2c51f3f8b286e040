// PatternTip: while a box with a pattern has the focus, a tip near it says what the pattern gives, or where
// it does not compile.
//
//     PatternTip tip(window, [&](const QWidget&, PatternTrial& trial) { return trial(texts(), sample); });
//     tip.watch(box, trial);
//     tip.refresh();      // something that the result depends on has changed
//
// Main thread.
#pragma once

#include "ui/pattern_sample.h"
#include "ui/widgets/balloon.h"

#include <QTimer>

#include <functional>
#include <vector>

namespace quorvex {

/// Where dialogs find the track to try patterns on: the widget that they are opened from, or one that it
/// stands in, may implement this.
class PatternSampleSource {
public:
    /// The first track as the action to be edited meets it; nullptr when there is none. Valid until the next
    /// event.
    virtual const PatternSample* pattern_sample(vantaro::ServiceBase& action) = 0;

protected:
    ~PatternSampleSource() = default;
};

/// Looks from `widget` outwards.
PatternSampleSource* find_pattern_samples(QWidget* widget);

class PatternTip final : public QObject {
public:
    using Try = std::function<PatternResult(const QWidget& box, PatternTrial& trial)>;

    /// `window` outlives the tip.
    PatternTip(QWidget& window, Try try_pattern);

    void watch(QWidget& box, PatternTrial& trial);
    /// Something that patterns depend on has changed: tries again, soon.
    void refresh();
    /// Hides the tip until something changes: another message is more important.
    void step_back();

protected:
    bool eventFilter(QObject* box, QEvent* event) override;

private:
    struct Watched {
        QWidget* box;
        PatternTrial* trial;
    };

    void update();

    const Try try_;
    Balloon& balloon_; // belongs to the window
    std::vector<Watched> watched_;
    QTimer soon_;
};

} // namespace quorvex
