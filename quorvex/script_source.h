// Where scripts come from: files in either form, standard input, or the saved scripts.
//
// Main thread.
#pragma once

#include "quorvex/verbs.h"
#include "script/stored_script.h"

#include <string>

namespace quorvex::command {

/// Reads a script in the byte form or the text form (which begins with "{") from a file, or from standard
/// input for "-". What a settings dialog would refuse is refused in the text form, and told of on the
/// terminal in the other.
/// Throws: vantaro_io exceptions; the text names the file and, for the text form, the place.
StoredScript read_script(Session& session, const std::string& path);

/// The script of that file ("-": of standard input), or else the saved script of that name, of whose faults
/// the terminal tells, too.
/// Throws: as above; vantaro_io::exception_io_not_found when there is neither.
StoredScript load_named_script(Session& session, const std::string& script);

/// Whether what was given as a script is a name that says something later: neither standard input nor an open
/// file of the process ("/dev/fd/63").
bool has_lasting_name(const std::string& script);

} // namespace quorvex::command
