// Making the journal of an ended run small: what a crash would have needed goes, and the old bytes are
// written down by what they have in common with the new ones, which the files hold now.
//
//     shrink_journal(calls, path);
//     ...
//     StoredChange stored = read_change(journal, position);
//     restore_old_bytes(stored, file);
//     FileEdit back = inverse_of(stored.change);
//
// One thread at a time for a journal.
#pragma once

#include "vantaro/journal/journal_file.h"
#include "vantaro/journal/record.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vantaro::core {

/// Replaces the journal of an ended run by a small one that does for taking the run back.
/// Throws vantaro_io::exception_io; the journal is then as it was.
void shrink_journal(SystemCalls& calls, const std::string& path);

/// What a journal says of a change that was made.
struct MadeChange {
    /// Of its record.
    std::uint64_t position = 0;
    FileIdentity after;
    /// Whether it took place. If not, that can be told from the file only, and put right (settle.h).
    bool is_certain = true;
};

struct MadeChanges {
    /// In order.
    std::vector<MadeChange> changes;
    /// The paths of changes of which not more can be read; empty where not even that.
    std::vector<std::string> damaged;
};

/// The changes that took place, or may have. Throws vantaro_io::exception_io when the journal cannot be read.
MadeChanges made_changes(const OpenFile& journal);

/// A change as its record has it.
struct StoredChange {
    FileChange change;
    /// The old bytes are packed.
    bool is_packed = false;
};

/// Throws vantaro_io::exception_io_data when no change stands there, or it is damaged.
StoredChange read_change(const OpenFile& journal, std::uint64_t position);

/// Sees to it that the change has its old bytes. `file` holds the new ones.
/// Throws vantaro_io::exception_io_data when it does not, or they are not those whose checksum is known; and
/// what OpenFile::read throws.
void restore_old_bytes(StoredChange& stored, const OpenFile& file);

} // namespace vantaro::core
