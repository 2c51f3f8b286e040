#include "vantaro/safe_write/block_shift.h"

#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace vantaro::core {

namespace {

/// Four fit the inode, and the shift splits one.
constexpr unsigned most_extents = 3;

bool has_few_extents(const OpenFile& file) {
    // The kernel's structure ends in an array without a size.
    struct alignas(fiemap) Map {
        std::array<std::byte, sizeof(fiemap) + (most_extents + 1) * sizeof(fiemap_extent)> bytes{};
    } map;
    auto* head = reinterpret_cast<fiemap*>(map.bytes.data());
    head->fm_length = FIEMAP_MAX_OFFSET;
    head->fm_flags = FIEMAP_FLAG_SYNC;
    head->fm_extent_count = most_extents + 1;
    if (::ioctl(file.descriptor(), FS_IOC_FIEMAP, head) != 0 || head->fm_mapped_extents > most_extents)
        return false;
    const auto* extents = reinterpret_cast<const fiemap_extent*>(map.bytes.data() + sizeof(fiemap));
    return std::all_of(extents, extents + head->fm_mapped_extents, [](const fiemap_extent& extent) {
        return (extent.fe_flags & ~std::uint32_t{FIEMAP_EXTENT_LAST}) == 0;
    });
}

/// The block size of a file system that shifts as it should; 0 for others.
std::uint64_t block_size(const OpenFile& file) {
    if (!file.calls().file_system(file.descriptor()).shifts)
        return 0;
    return static_cast<std::uint64_t>(file.status().st_blksize);
}

} // namespace

std::optional<BlockShift> plan_shift(const OpenFile& file, const FileEdit& edit) {
    const std::int64_t growth =
        static_cast<std::int64_t>(edit.new_size()) - static_cast<std::int64_t>(edit.old_size);
    const std::uint64_t block = growth == 0 ? 0 : block_size(file);
    if (block == 0 || growth % static_cast<std::int64_t>(block) != 0)
        return std::nullopt;

    const auto moves = [](const Splice& splice) { return splice.growth() != 0; };
    const auto& splices = edit.splices;
    auto first = static_cast<std::size_t>(std::ranges::find_if(splices, moves) - splices.begin());
    const auto last =
        splices.size() - 1
        - static_cast<std::size_t>(std::find_if(splices.rbegin(), splices.rend(), moves) - splices.rbegin());
    // The last block boundary at or in front of the bytes that move on unchanged.
    const std::uint64_t boundary = splices[last].end() / block * block;
    const std::uint64_t removed = growth < 0 ? static_cast<std::uint64_t>(-growth) : 0;
    if (boundary < removed || boundary >= edit.old_size)
        return std::nullopt;
    BlockShift shift{boundary - removed, growth, edit};

    std::uint64_t start = shift.offset;
    while (first > 0 && splices[first - 1].end() > start)
        --first;
    start = std::min(start, splices[first].offset);
    if (!has_few_extents(file))
        return std::nullopt;
    merge_splices(file, shift.edit, first, last, start, splices[last].end());
    return shift;
}

} // namespace vantaro::core
