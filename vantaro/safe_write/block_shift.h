// Whether a file can grow or shrink by whole blocks that its file system inserts or takes out, in front of
// bytes that then need not be moved.
//
// Only where the shift is done at once: the size of the file tells afterwards whether it took place. That is
// so on ext4 for a file whose extents, at most four, stand in its inode, together with the size: one
// transaction, or without a journal one sector. A larger tree of extents is shifted leaf by leaf, and XFS
// shifts one extent a transaction.
#pragma once

#include "vantaro/common/file_edit.h"
#include "vantaro/safe_write/open_file.h"

#include <cstdint>
#include <optional>

namespace vantaro::core {

struct BlockShift {
    std::uint64_t offset = 0;
    /// By how many bytes the file grows, or shrinks when it is below 0.
    std::int64_t size = 0;
    /// The same edit with everything merged that the shift moves elsewhere than the edit does.
    FileEdit edit;
};

/// Nothing when the edit does not change the length by a multiple of the block size, or the file system is
/// another one, or the file has too many extents. Any thread. Throws what OpenFile::read throws.
std::optional<BlockShift> plan_shift(const OpenFile& file, const FileEdit& edit);

} // namespace vantaro::core
