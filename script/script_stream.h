// The one byte format of scripts: in the stored configuration and in script files. docs/script-format.md has
// it as a grammar.
//
//     write_script_file("tidy.qvx", stored, abort);
//     StoredScript stored = read_script_file("tidy.qvx", abort);
//
// Reading looks at no kind and no parameter text: a record of unknown kinds loads. All operations may be
// called on any thread, and fail with the stream's own exceptions, vantaro_io::exception_io_data_truncation
// when it ends inside a field, and vantaro_io::exception_aborted.
#pragma once

#include "host/api/stream.h"
#include "script/stored_script.h"

#include <vector>

namespace quorvex {

/// The first 16 bytes of a script file.
inline constexpr vantaro::Guid script_file_magic = vantaro::guid("{0C58B0EC-7A9F-4892-BEB0-52845BEB0C4B}");

/// Texts are written up to their first NUL byte.
void write_script(vantaro::StreamWriter& writer, const StoredScript& script, vantaro::AbortFlag& abort);
/// Replaces the content of `target` field by field: after a failure it holds what was read before.
void read_script(vantaro::StreamReader& reader, StoredScript& target, vantaro::AbortFlag& abort);

void write_script_list(vantaro::StreamWriter& writer, const std::vector<StoredScript>& scripts,
                       vantaro::AbortFlag& abort);
/// After a failure `target` holds the scripts read before it.
void read_script_list(vantaro::StreamReader& reader, std::vector<StoredScript>& target,
                      vantaro::AbortFlag& abort);

/// Creates or replaces the file.
void write_script_file(const char* path, const StoredScript& script, vantaro::AbortFlag& abort);
/// Throws: vantaro_io::exception_io_data when the file does not begin with the magic.
StoredScript read_script_file(const char* path, vantaro::AbortFlag& abort);
/// The same for a file that is open.
StoredScript read_script_file(vantaro::StreamReader& reader, vantaro::AbortFlag& abort);

} // namespace quorvex
