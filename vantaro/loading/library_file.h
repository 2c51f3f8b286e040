// A look at a library file before it is loaded.
#pragma once

#include <string>

namespace vantaro::core {

/// Why the file cannot be loaded safely; empty when it can. The system's loader maps what the headers promise
/// without asking whether it is there, and a file that was copied in part would end the process.
std::string find_damage(const std::string& path);

} // namespace vantaro::core
