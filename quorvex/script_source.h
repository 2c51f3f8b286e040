// Where scripts come from: files in either form, or the saved scripts.
//
// Main thread.
#pragma once

#include "script/stored_script.h"

#include <string>

namespace quorvex::command {

/// Reads a script file, in the byte form or the text form (which begins with "{").
/// Throws: vantaro_io exceptions; the text names the file and, for the text form, the place.
StoredScript read_script(const std::string& path);

/// The script file of that path, or else the saved script of that name.
/// Throws: as above; vantaro_io::exception_io_not_found when there is neither.
StoredScript load_named_script(const std::string& script);

} // namespace quorvex::command
