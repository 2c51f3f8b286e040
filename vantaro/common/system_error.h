// Failures of the system as the exceptions that cross to components.
//
//     if (::stat(path.c_str(), &status) != 0)
//         throw_system_error(errno);
//
// Any thread.
#pragma once

#include "host/api/exceptions.h"

#include <string>

namespace vantaro::core {

/// The disk, or what the user may have of it, is full: trying again can help once something was freed.
class NoSpaceLeft : public vantaro_io::exception_io {
    using exception_io::exception_io;
};

/// Throws what fits an errno value: vantaro_io::exception_io_not_found, exception_io_denied, or exception_io
/// (NoSpaceLeft where that is it) with the system's text.
[[noreturn]] void throw_system_error(int code);
/// The same with a text that names the path.
[[noreturn]] void throw_system_error(int code, const std::string& path);

} // namespace vantaro::core
