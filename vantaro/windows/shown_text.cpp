#include "vantaro/windows/shown_text.h"

#include <QStringList>

#include <algorithm>

namespace vantaro::core {

QString shown_tip(const QString& text) {
    constexpr qsizetype most_lines = 20;
    constexpr qsizetype most_characters = 1200;
    constexpr qsizetype longest_line = 100;
    if (text.isEmpty())
        return {};
    const QString begin = text.left(most_characters);
    QString shown = begin.section(u'\n', 0, most_lines - 1);
    if (shown.size() < text.size())
        shown += QStringLiteral(" (...)");
    const auto is_long = [](const QString& line) { return line.size() > longest_line; };
    const char* wrapping = std::ranges::any_of(shown.split(u'\n'), is_long) ? "pre-wrap" : "pre";
    // A word without an end is broken too: a zero-width space every so often lets it.
    QString html;
    qsizetype since_break = 0;
    for (const QChar character : shown) {
        constexpr qsizetype longest_word = 60;
        since_break = character.isSpace() ? 0 : since_break + 1;
        if (since_break > longest_word && !character.isLowSurrogate() && !character.isMark()) {
            html += QChar(0x200B);
            since_break = 1;
        }
        html += QString(character).toHtmlEscaped();
    }
    return QString("<p style='white-space:%1'>%2</p>").arg(QLatin1String(wrapping), html);
}

} // namespace vantaro::core
