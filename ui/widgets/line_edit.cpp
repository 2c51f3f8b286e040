#include "ui/widgets/line_edit.h"

#include "ui/dialog_template.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionFrame>

#include <limits>

namespace quorvex {

namespace {

bool is_break(QChar c) {
    return c == '\r' || c == '\n';
}

QString one_line(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && is_break(text[first]))
        ++first;
    while (last > first && is_break(text[last - 1]))
        --last;
    QString line;
    for (qsizetype i = first; i < last; ++i) {
        const bool is_second = text[i] == '\n' && i > first && text[i - 1] == '\r';
        if (text[i] != QChar(u'\0') && !is_second)
            line += is_break(text[i]) ? QChar(' ') : text[i];
    }
    return line;
}

constexpr qsizetype is_not_full = std::numeric_limits<qsizetype>::max();

/// How wide a text fits in.
int room(const QLineEdit& edit) {
    QStyleOptionFrame option;
    option.initFrom(&edit);
    option.lineWidth = edit.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, &edit);
    const QRect inside = edit.style()->subElementRect(QStyle::SE_LineEditContents, &option, &edit);
    constexpr int margins = 4; // the text's own
    return inside.width() - margins - 1;
}

} // namespace

LineEdit::LineEdit(unsigned flags, QWidget* parent)
    : QLineEdit(parent), flags_(flags), full_at_(is_not_full) {
    setMaxLength(std::numeric_limits<int>::max()); // nothing is cut without a word
    connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (text.size() < full_at_ || !isModified())
            full_at_ = is_not_full;
    });
}

QString LineEdit::corrected(const QString& text) {
    QString line = one_line(text);
    if (flags_ & control_flag::upper_case)
        line = line.toUpper();
    return flags_ & control_flag::scrolls ? line : cut_to_fit(line);
}

/// As much from the beginning as there is room for.
QString LineEdit::cut_to_fit(const QString& text) {
    if (text.isEmpty())
        return text;
    QString rest = this->text();
    qsizetype place = cursorPosition();
    bool is_full = full_at_ != is_not_full;
    if (hasSelectedText()) {
        place = selectionStart();
        rest.remove(place, selectionLength());
        is_full = false; // it goes
    }
    const int width = room(*this);
    QString inserted = is_full ? QString() : text;
    while (!inserted.isEmpty()
           && fontMetrics().horizontalAdvance(QString(rest).insert(place, inserted)) > width)
        inserted.chop(inserted.size() > 1 && inserted.back().isLowSurrogate() ? 2 : 1);
    if (inserted.size() < text.size()) {
        full_at_ = rest.size() + inserted.size();
        QApplication::beep();
    }
    return inserted;
}

void LineEdit::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Paste)) {
        insert(corrected(QApplication::clipboard()->text()));
        return;
    }
    const QString text = event->text();
    if (text.isEmpty() || !(text.front().isPrint() || text.front().isSurrogate()))
        return QLineEdit::keyPressEvent(event);
    const QString allowed = corrected(text);
    if (allowed.isEmpty())
        return; // there is no room
    QKeyEvent key(event->type(), event->key(), event->modifiers(), allowed, event->isAutoRepeat());
    QLineEdit::keyPressEvent(&key);
    event->setAccepted(key.isAccepted());
}

void LineEdit::inputMethodEvent(QInputMethodEvent* event) {
    QInputMethodEvent allowed(event->preeditString(), event->attributes());
    allowed.setCommitString(corrected(event->commitString()), event->replacementStart(),
                            event->replacementLength());
    QLineEdit::inputMethodEvent(&allowed);
    event->setAccepted(allowed.isAccepted());
}

void LineEdit::mouseReleaseEvent(QMouseEvent* event) {
    QClipboard* clipboard = QApplication::clipboard();
    if (event->button() != Qt::MiddleButton || !clipboard->supportsSelection())
        return QLineEdit::mouseReleaseEvent(event);
    const QString selected = clipboard->text(QClipboard::Selection);
    deselect();
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    insert(corrected(selected));
}

void LineEdit::contextMenuEvent(QContextMenuEvent* event) {
    QMenu* menu = createStandardContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction* action : menu->actions()) {
        if (!action->text().startsWith(QLineEdit::tr("&Paste")))
            continue;
        action->disconnect(this);
        connect(action, &QAction::triggered, this,
                [this] { insert(corrected(QApplication::clipboard()->text())); });
    }
    menu->popup(event->globalPos());
}

void LineEdit::dropEvent(QDropEvent* event) {
    const QString text = event->mimeData()->text();
    deselect();
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    insert(corrected(text));
    // Whatever it was, it is copied: a move would take more away than came in.
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void LineEdit::resizeEvent(QResizeEvent* event) {
    QLineEdit::resizeEvent(event);
    full_at_ = is_not_full;
}

} // namespace quorvex
