// What a file system can and cannot do that matters for how a file on it is written.
//
//     const FileSystemTraits traits = FileSystemTraits::of(descriptor);
//     if (!traits.replaces_safely) ...
//
// Values; any thread.
#pragma once

namespace vantaro::core {

struct FileSystemTraits {
    /// A file can take the name of another one, and at every instant, also after a power failure, the name
    /// leads to one of them. Not so on SMB shares, whose client removes the file that is to be replaced when
    /// somebody has it open, and without_order.
    bool replaces_safely = true;
    /// Files are not replaced even when nothing else is left: SMB shares.
    bool never_replaces = false;
    /// What was written, named and made longer since the last flush gets to the medium in any order, and a
    /// file that became longer can end in anything after a power failure: FAT, exFAT, and ext2 or ext4
    /// without a journal.
    bool without_order = false;
    /// Inserts and removes blocks of a file at once (block_shift.h): ext4.
    bool shifts = false;
    /// Others may hold files in ways that this system does not know of, and mind a rename over an open one:
    /// network file systems and FUSE.
    bool is_remote = false;

    /// Of an open file. A file system that cannot be told counts as an ordinary local one.
    static FileSystemTraits of(int descriptor);
};

} // namespace vantaro::core
