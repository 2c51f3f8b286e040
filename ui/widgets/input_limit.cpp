#include "ui/widgets/input_limit.h"

#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <memory>
#include <utility>

namespace quorvex {

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
        // What the program puts in cannot be undone; what undo brings back can be redone.
        if (excess <= 0 || state->is_at_work || !document->isUndoAvailable() || document->isRedoAvailable())
            return;
        // What came in last, which ends at the cursor, goes again from its end.
        const int end = edit.textCursor().position();
        const int first = std::max(0, end - (document->characterCount() - before));
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
