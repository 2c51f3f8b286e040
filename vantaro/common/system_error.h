// Failures of the system as the exceptions that cross to components.
//
//     if (::stat(path.c_str(), &status) != 0)
//         throw_system_error(errno);
//
// Any thread.
#pragma once

#include <string>

namespace vantaro::core {

/// Throws what fits an errno value: vantaro_io::exception_io_not_found, exception_io_denied, or exception_io
/// with the system's text.
[[noreturn]] void throw_system_error(int code);
/// The same with a text that names the path.
[[noreturn]] void throw_system_error(int code, const std::string& path);

} // namespace vantaro::core
