#include "ui/widgets/completion.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>

namespace quorvex {

Completion::Completion(QComboBox& box, const QStringList& entries, bool upper_case)
    : box_(box), completer_(entries), upper_case_(upper_case) {
    completer_.setCaseSensitivity(Qt::CaseInsensitive);
    completer_.setCompletionMode(QCompleter::PopupCompletion);
    completer_.setWidget(&box);
    const auto take_on = [this](const QString& entry) { box_.setEditText(entry); };
    connect(&completer_, qOverload<const QString&>(&QCompleter::highlighted), this, take_on);
    connect(&completer_, qOverload<const QString&>(&QCompleter::activated), this, take_on);
    completer_.popup()->installEventFilter(this);
}

void Completion::complete(bool append) {
    QLineEdit& edit = *box_.lineEdit();
    const QString typed = edit.text();
    completer_.setCompletionPrefix(typed);
    const QString tail = completer_.currentCompletion().mid(typed.size());
    if (typed.isEmpty() || (completer_.completionCount() < 2 && tail.isEmpty())) {
        completer_.popup()->hide();
        return;
    }
    if (append && edit.cursorPosition() == typed.size() && !tail.isEmpty()) {
        edit.insert(upper_case_ ? tail.toUpper() : tail);
        edit.setSelection(static_cast<int>(typed.size()),
                          static_cast<int>(edit.text().size() - typed.size()));
    }
    completer_.complete();
    completer_.popup()->setCurrentIndex(QModelIndex());
}

/// Enter with nothing chosen in the list is meant for the dialog.
bool Completion::eventFilter(QObject*, QEvent* event) {
    if (event->type() != QEvent::KeyPress || completer_.popup()->currentIndex().isValid())
        return false;
    const auto* key = static_cast<const QKeyEvent*>(event);
    if (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter)
        return false;
    completer_.popup()->hide();
    QKeyEvent enter(QEvent::KeyPress, key->key(), key->modifiers());
    QCoreApplication::sendEvent(box_.window(), &enter);
    return true;
}

} // namespace quorvex
