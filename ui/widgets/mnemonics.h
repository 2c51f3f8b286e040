// Letters by which controls are reached from the keyboard with Alt.
//
// Main thread.
#pragma once

#include <QSet>
#include <QString>

#include <vector>

class QCheckBox;
class QLabel;

namespace quorvex {

/// The text with "&" before a letter that `taken` does not have, the first of a word if one is free, and the
/// letter taken. A text without a free letter stays as it is.
QString with_mnemonic(const QString& text, QSet<QChar>& taken);

/// The letter that a text marks ("&Name"), in small; a null character when there is none.
QChar mnemonic_of(const QString& text);

/// Gives each of a dialog's labels and check boxes a letter of its own, where its text marks none and has one
/// left that nobody has: `taken` are the letters of the dialog's other controls. The texts read as before,
/// with that letter underlined.
void add_mnemonics(const std::vector<QLabel*>& labels, const std::vector<QCheckBox*>& boxes,
                   QSet<QChar> taken);

} // namespace quorvex
