#include "ui/widgets/input_rules.h"

#include "ui/dialog_template.h"

#include <QFontMetrics>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <memory>
#include <utility>

namespace quorvex {

namespace {

QString one_line(QString text) {
    static const QRegularExpression at_the_ends("^[\r\n]+|[\r\n]+$");
    static const QRegularExpression breaks("\r\n|\r|\n");
    return text.remove(QChar(u'\0')).remove(at_the_ends).replace(breaks, " ");
}

/// How wide a text fits in.
int room(const QLineEdit& edit) {
    QStyleOptionFrame option;
    option.initFrom(&edit);
    option.lineWidth = edit.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, &edit);
    const QRect inside = edit.style()->subElementRect(QStyle::SE_LineEditContents, &option, &edit);
    constexpr int margins = 4; // the text's own, and one pixel for the cursor
    return inside.width() - margins - 1;
}

/// Takes characters away before the cursor until the text fits, but none that was there before.
void cut_to_fit(QString& text, qsizetype& cursor, qsizetype length_before, const QLineEdit& edit) {
    const QFontMetrics metrics = edit.fontMetrics();
    const int width = room(edit);
    while (text.size() > length_before && cursor > 0 && metrics.horizontalAdvance(text) > width) {
        const qsizetype units = cursor > 1 && text[cursor - 1].isLowSurrogate() ? 2 : 1;
        cursor -= units;
        text.remove(cursor, units);
    }
}

} // namespace

void rule_input(QLineEdit& edit, unsigned flags, std::function<void()> then) {
    struct State {
        qsizetype length_before = 0;
        bool is_at_work = false;
    };
    const auto state = std::make_shared<State>();
    const auto correct = [&edit, flags, state](const QString& typed) {
        QString text = one_line(typed);
        if (flags & control_flag::upper_case)
            text = text.toUpper();
        qsizetype cursor = std::min(qsizetype{edit.cursorPosition()}, text.size());
        if (!(flags & control_flag::scrolls))
            cut_to_fit(text, cursor, state->length_before, edit);
        if (text == typed)
            return;
        edit.selectAll();
        edit.insert(text); // can be undone, unlike setText
        edit.setCursorPosition(static_cast<int>(cursor));
    };
    QObject::connect(&edit, &QLineEdit::textEdited, &edit, [=, then = std::move(then)](const QString& typed) {
        // Insertions count as edits too.
        if (std::exchange(state->is_at_work, true))
            return;
        correct(typed);
        if (then)
            then();
        state->is_at_work = false;
    });
    // Comes last. What it brings along may be the text before it was corrected.
    QObject::connect(&edit, &QLineEdit::textChanged, &edit,
                     [&edit, state] { state->length_before = edit.text().size(); });
}

void limit_input(QPlainTextEdit& edit, int limit) {
    if (limit == 0)
        return;
    struct State {
        int characters_before = 0;
        bool is_at_work = false;
    };
    const auto state = std::make_shared<State>();
    QTextDocument* document = edit.document();
    QObject::connect(&edit, &QPlainTextEdit::textChanged, &edit, [&edit, document, state, limit] {
        const int before = std::exchange(state->characters_before, document->characterCount());
        const int line_breaks = document->blockCount() - 1;
        int excess = document->characterCount() - 1 + line_breaks - limit;
        // What the program puts in cannot be undone.
        if (excess <= 0 || state->is_at_work || !document->isUndoAvailable())
            return;
        // What came in last, which ends at the cursor, goes again from its end.
        const int end = edit.textCursor().position();
        const int first = end - (document->characterCount() - before);
        int start = end;
        while (excess > 0 && start > first) {
            --start;
            excess -= document->characterAt(start) == QChar::ParagraphSeparator ? 2 : 1;
        }
        if (start > first && document->characterAt(start).isLowSurrogate())
            --start;
        state->is_at_work = true;
        QTextCursor cursor(document);
        cursor.joinPreviousEditBlock();
        cursor.setPosition(start);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        cursor.endEditBlock();
        state->is_at_work = false;
    });
}

} // namespace quorvex
