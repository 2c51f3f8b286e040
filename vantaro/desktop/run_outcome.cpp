#include "vantaro/desktop/run_outcome.h"

#include <QLocale>

namespace vantaro::core {

QString outcome_text(const UpdateReport& report, const QKeySequence& undo_keys) {
    const auto number = [](std::size_t n) { return QLocale().toString(static_cast<qulonglong>(n)); };
    QString text = report.written == 0   ? QStringLiteral("No files changed")
                   : report.written == 1 ? QStringLiteral("1 file changed")
                                         : number(report.written) + QStringLiteral(" files changed");
    if (report.failed > 0)
        text += QStringLiteral(", ") + number(report.failed) + QStringLiteral(" failed");
    if (report.aborted)
        text += QStringLiteral(" before it was cancelled");
    text += u'.';
    if (report.run == 0)
        return text;
    const QString way_back = undo_keys.isEmpty() ? QStringLiteral("\"Undo last run\" in the menu")
                                                 : undo_keys.toString(QKeySequence::NativeText);
    return text + u' ' + way_back + QStringLiteral(" takes it back.");
}

} // namespace vantaro::core
