// What the boxes of a dialog make of what a person types or pastes. Texts that the program puts in stay as
// they are.
//
// Main thread.
#pragma once

#include <functional>

class QLineEdit;
class QPlainTextEdit;

namespace quorvex {

/// One line: line breaks become blanks (at either end they go), NUL goes. By control_flag bits: small letters
/// become capital ones; without control_flag::scrolls, a text grows no wider than the box. Each time the
/// person has changed the text, `then` is called with it in order; what it inserts itself stays as it is.
void rule_input(QLineEdit& edit, unsigned flags, std::function<void()> then = {});

/// Several lines: no more than `limit` UTF-16 units can be typed, a line break counting as two; 0 for any
/// number.
void limit_input(QPlainTextEdit& edit, int limit);

} // namespace quorvex
