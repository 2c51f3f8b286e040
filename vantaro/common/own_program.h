// Where the program that runs lies, for finding what belongs to it and for starting it again. Any thread.
#pragma once

#include <string>

namespace vantaro::core {

/// Its path with all links followed. Without /proc it is the path that it was started by, which no longer
/// leads there when the process has changed its working folder since.
/// Throws: vantaro_io::exception_io when it is gone.
std::string own_program();

} // namespace vantaro::core
