// Letters by which controls are reached from the keyboard with Alt.
//
// Main thread.
#pragma once

#include <vector>

class QCheckBox;
class QLabel;

namespace quorvex {

/// Gives each of a dialog's labels and check boxes a letter of its own, where its text marks none ("&Name")
/// and has one left. The texts read as before, with that letter underlined.
void add_mnemonics(const std::vector<QLabel*>& labels, const std::vector<QCheckBox*>& boxes);

} // namespace quorvex
