#include "ui/widgets/change_label.h"

#include "ui/widgets/tool_tip.h"

#include <QEvent>
#include <QLocale>
#include <QMouseEvent>

#include <algorithm>

namespace quorvex {

namespace {

/// The sentences of a text, the first alone, and that without what goes without saying.
QStringList shortened(const QString& text) {
    QString first = text.section(QStringLiteral(". "), 0, 0);
    QStringList texts{text};
    if (first != text)
        texts << first + u'.' << first;
    texts << first.remove(QStringLiteral(" files")).remove(QStringLiteral(" file"));
    return texts;
}

} // namespace

ChangeLabel::ChangeLabel(QLabel& label, std::function<void()> clicked)
    : label_(label), clicked_(std::move(clicked)) {
    label.setTextFormat(Qt::PlainText);
    label.installEventFilter(this);
}

void ChangeLabel::show_count(const ChangeCounter& counter) {
    const QString total = QLocale().toString(static_cast<qulonglong>(counter.total()));
    const QString changed = QLocale().toString(static_cast<qulonglong>(counter.changed()));
    const QString still = counter.counted() == counter.total() ? QString() : QString(u'…');
    const QString counts = QString("%1 of %2").arg(changed, total);
    const QString verb = QString::fromLatin1(counter.changed() == 1 ? " changes" : " change");
    count_texts_ = {counts + verb + still, counts + still};
    leads_on_ = counter.changed() > 0;
    update();
}

void ChangeLabel::show_outcome(const QString& text) {
    outcome_ = text;
    update();
}

void ChangeLabel::forget_outcome() {
    if (!std::exchange(outcome_, QString()).isEmpty())
        update();
}

void ChangeLabel::update() {
    fit();
    QString tip = outcome_.isEmpty() ? count_texts_.value(0) : outcome_;
    if (leads_on_)
        tip += QStringLiteral("\nClick here, or press F3, to go to the next track that changes.");
    label_.setToolTip(plain_tool_tip(tip));
    label_.setCursor(leads_on_ ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void ChangeLabel::fit() {
    const QStringList texts = outcome_.isEmpty() ? count_texts_ : shortened(outcome_);
    if (texts.isEmpty())
        return;
    const QFontMetrics metrics = label_.fontMetrics();
    const int room = label_.contentsRect().width();
    const auto fitting = std::ranges::find_if(
        texts, [&](const QString& text) { return metrics.horizontalAdvance(text) < room; });
    label_.setText(fitting != texts.end() ? *fitting
                                          : metrics.elidedText(texts.back(), Qt::ElideRight, room));
}

bool ChangeLabel::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::Resize:
    case QEvent::FontChange:
        fit();
        break;
    case QEvent::MouseButtonRelease: {
        const auto& mouse = static_cast<const QMouseEvent&>(*event);
        if (mouse.button() == Qt::LeftButton && label_.rect().contains(mouse.position().toPoint()))
            clicked_();
        break;
    }
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace quorvex
