#include "ui/widgets/pattern_tip.h"

#include "host/exception_filter.h"
#include "host/shared/text.h"

#include <QEvent>

namespace quorvex {

namespace {

/// Long enough for a burst of keys to be one change.
constexpr int pause_ms = 80;
constexpr std::size_t shown_characters = 200;

} // namespace

PatternSampleSource* find_pattern_samples(QWidget* widget) {
    for (; widget; widget = widget->parentWidget())
        if (auto* source = dynamic_cast<PatternSampleSource*>(widget))
            return source;
    return nullptr;
}

PatternTip::PatternTip(QWidget& window, Try try_pattern)
    : try_(std::move(try_pattern)), balloon_(*new Balloon(window, Balloon::Shape::plain)) {
    soon_.setSingleShot(true);
    soon_.setInterval(pause_ms);
    connect(&soon_, &QTimer::timeout, this, [this] { guarded([&] { update(); }); });
}

void PatternTip::watch(QWidget& box, PatternTrial& trial) {
    watched_.push_back({&box, &trial});
    box.installEventFilter(this);
}

void PatternTip::refresh() {
    soon_.start();
}

void PatternTip::step_back() {
    soon_.stop();
    balloon_.take_away();
}

bool PatternTip::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::FocusIn)
        refresh();
    else if (event->type() == QEvent::FocusOut || event->type() == QEvent::Hide)
        step_back();
    return false;
}

void PatternTip::update() {
    for (const auto& [box, trial] : watched_) {
        if (!box->hasFocus())
            continue;
        const PatternResult result = try_(*box, *trial);
        if (result.state == PatternResult::State::unknown)
            break;
        std::string text = result.text;
        if (result.state == PatternResult::State::result)
            text = "First track: " + (text.empty() ? "(empty)" : text);
        text = first_line(limit_text(text, shown_characters));
        balloon_.show_at(*box, QString::fromStdString(text));
        return;
    }
    balloon_.take_away();
}

} // namespace quorvex
