// Texts of files and components as windows show them.
//
//     label.setText(shown_text(track.path()));
//
// Any thread.
#pragma once

#include "vantaro/terminal/terminal.h"

#include <QString>

#include <string_view>

namespace vantaro::core {

/// One line: what is not UTF-8 as replacement characters, control characters and direction marks as "_".
inline QString shown_text(std::string_view text) {
    return QString::fromStdString(printable(text));
}

/// The same with the lines of a text.
inline QString shown_lines(std::string_view text) {
    return QString::fromStdString(printable_text(text));
}

/// A text as a tooltip that shows just its characters, lines and all, whatever looks like formatting in it. A
/// long one is wrapped, and cut before it covers the screen.
QString shown_tip(const QString& text);

} // namespace vantaro::core
