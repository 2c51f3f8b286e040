// Putting a file right whose change may have been cut off.
//
//     switch (settle(calls, change, Wait::a_moment)) {
//     case FileState::as_before: ...
//
// Any thread, one at a time for a file.
#pragma once

#include "vantaro/safe_write/file_change.h"

namespace vantaro::core {

/// Puts the file to its old or its new bytes and tells which they are: as_before, as_changed, or foreign,
/// which is left alone. A file whose name leads nowhere, or to nothing, gets its new bytes when they are
/// whole under the temporary name; otherwise it is foreign. The temporary file is removed, but for one that
/// may be all that is left of the file. What was put right is on the medium but for names, which
/// SystemCalls::sync_file_system sees to.
/// The file is locked meanwhile. Throws what OpenFile throws when it cannot be reached or written.
FileState settle(SystemCalls& calls, const FileChange& change, Wait wait);

/// Removes a file that a run has left beside another one. Returns whether it is gone; leaves alone what has
/// not the name and kind of such a file.
bool remove_temporary(SystemCalls& calls, const std::string& path);

} // namespace vantaro::core
