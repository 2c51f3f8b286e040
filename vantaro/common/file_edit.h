// What makes a file's new bytes of its old ones: parts of the old file that are replaced, everything between
// them staying as it is.
//
//     FileEdit edit{file.size(), {{0, 10, "ID3..."}}};   // the first ten bytes become others
//     edit.new_size();
//
// Values; any thread.
#pragma once

#include "vantaro/common/byte_source.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core {

/// `bytes` take the place of the `size` bytes from `offset` on in the old file.
struct Splice {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::string bytes;

    std::uint64_t end() const { return offset + size; }
    /// By how much it makes the file longer.
    std::int64_t growth() const {
        return static_cast<std::int64_t>(bytes.size()) - static_cast<std::int64_t>(size);
    }
    friend bool operator==(const Splice&, const Splice&) = default;
};

/// A part of a file.
struct Extent {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;

    std::uint64_t end() const { return offset + size; }
    friend bool operator==(const Extent&, const Extent&) = default;
};

struct FileEdit {
    std::uint64_t old_size = 0;
    /// In the order of their offsets; they do not overlap.
    std::vector<Splice> splices;
    /// What of the old file the edit was made from: all its tags, at least. In the order of their offsets,
    /// apart from each other; splices may overlap them.
    std::vector<Extent> looked_at = {};

    bool empty() const { return splices.empty(); }
    std::uint64_t new_size() const;
};

/// The same edit without what only repeats the old bytes: splices lose equal beginnings and ends, and those
/// that keep their length are split where long runs are equal. `file` holds the old bytes.
/// Throws what reading it throws.
FileEdit without_repetitions(const ByteSource& file, const FileEdit& edit);

/// What the edit makes of the old bytes. For tests and for what is in memory.
std::string edited_bytes(const FileEdit& edit, std::string_view old_bytes);

/// Merges the splices `first` to `last` to one, which starts at `start` or at the first splice's own offset,
/// whichever is lower, and ends at `end` or the last splice's own end, whichever is higher. `start` and `end`
/// must not cut into other splices. Throws what reading it throws.
void merge_splices(const ByteSource& file, FileEdit& edit, std::size_t first, std::size_t last,
                   std::uint64_t start, std::uint64_t end);

} // namespace vantaro::core
