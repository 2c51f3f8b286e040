// Tooltips of texts that come from files and people.
//
//     item->setToolTip(plain_tool_tip(text));
//
// Any thread.
#pragma once

#include <QString>

namespace quorvex {

/// A text as a tooltip that shows just its characters, lines and all, whatever looks like formatting in it. A
/// long one is wrapped, and cut before it covers the screen.
QString plain_tool_tip(const QString& text);

} // namespace quorvex
