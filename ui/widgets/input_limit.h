// A limit to what can be typed in a box of several lines. Texts that the program puts in stay as they are.
//
// Main thread.
#pragma once

class QPlainTextEdit;

namespace quorvex {

/// No more than `limit` UTF-16 units can be typed, a line break counting as two; 0 for any number.
void limit_input(QPlainTextEdit& edit, int limit);

} // namespace quorvex
