// Choosing a script file.
//
// Main thread.
#pragma once

#include <optional>
#include <string>

class QWidget;

namespace quorvex {

enum class FileDialog { open, save };

/// Asks for a script file (*.qvx, in any letters) in a window with the title, and waits. Returns its path, as
/// bytes of the file system, or nothing when the person has cancelled; saving over an existing file is asked
/// about. The parent may be deleted meanwhile.
std::optional<std::string> uGetOpenFileName(QWidget& parent, FileDialog mode, const char* title);

} // namespace quorvex
