// The component's page in the help.
//
// Main thread.
#pragma once

#include <string>

class QWidget;

namespace quorvex {

/// Where the page about the editor is: a file that is installed with the component. The address ends in the
/// host's version, the component's name, and the page.
std::string help_address();

/// Opens an address with what the desktop has for it; when that fails, says so in a message.
void uShellExecute(QWidget& parent, const std::string& address);

} // namespace quorvex
