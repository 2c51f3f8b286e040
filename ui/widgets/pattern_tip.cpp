#include "ui/widgets/pattern_tip.h"

#include "host/exception_filter.h"
#include "host/shared/text.h"

#include <QEvent>
#include <QPushButton>

#include <algorithm>

namespace quorvex {

namespace {

/// Long enough for a burst of keys to be one change.
constexpr int pause_ms = 80;
constexpr std::size_t shown_characters = 200;

/// How wide a tip may be that leaves the buttons just below the box free.
int free_width(const QWidget& box) {
    const QRect place = box.geometry();
    int right = place.right();
    for (const QPushButton* button : box.window()->findChildren<QPushButton*>()) {
        const QRect other = button->geometry();
        const bool is_near =
            other.top() > place.bottom() && other.top() < place.bottom() + 2 * place.height();
        if (is_near && other.left() > place.center().x())
            right = std::min(right, other.left() - place.height() / 4);
    }
    return right - place.left();
}

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
    balloon_.hide();
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
        balloon_.show_at(*box, QString::fromStdString(text), free_width(*box));
        return;
    }
    balloon_.hide();
}

} // namespace quorvex
