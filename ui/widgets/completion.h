// Completion while typing: the entries that begin with what stands in a box drop down (suggest), and the rest
// of the first one is put behind it, selected, so that the next letter replaces it (append).
//
// Main thread.
#pragma once

#include <QCompleter>
#include <QObject>
#include <QStringList>

class QComboBox;

namespace quorvex {

class Completion final : public QObject {
public:
    /// Completes from these entries, without regard to case; those that complete a text keep their order.
    /// With `upper_case`, what is put behind becomes capital letters. The box outlives the completion.
    Completion(QComboBox& box, const QStringList& entries, bool upper_case);

    /// The person has changed the text; with `append` there may be something put behind it.
    void complete(bool append);

protected:
    bool eventFilter(QObject* popup, QEvent* event) override;

private:
    QComboBox& box_;
    QCompleter completer_;
    const bool upper_case_;
};

} // namespace quorvex
