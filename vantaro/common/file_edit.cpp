#include "vantaro/common/file_edit.h"

#include <algorithm>
#include <string_view>

namespace vantaro::core {

namespace {

/// Equal runs shorter than this do not split a splice: noting a splice takes about as much.
constexpr std::size_t worthwhile_gap = 32;

void add_differences(FileEdit& result, std::uint64_t offset, std::string_view before,
                     std::string_view after) {
    std::size_t i = 0;
    while (i < before.size()) {
        if (before[i] == after[i]) {
            ++i;
            continue;
        }
        std::size_t end = i + 1; // behind the last difference
        for (std::size_t k = end; k < before.size() && k - end < worthwhile_gap; ++k)
            if (before[k] != after[k])
                end = k + 1;
        result.splices.push_back({offset + i, end - i, std::string(after.substr(i, end - i))});
        i = end;
    }
}

std::string read_part(const ByteSource& file, std::uint64_t offset, std::size_t size) {
    std::string bytes(size, '\0');
    bytes.resize(file.read(offset, bytes.data(), size));
    return bytes;
}

} // namespace

std::uint64_t FileEdit::new_size() const {
    std::int64_t growth = 0;
    for (const Splice& splice : splices)
        growth += splice.growth();
    return old_size + static_cast<std::uint64_t>(growth);
}

FileEdit without_repetitions(const ByteSource& file, const FileEdit& edit) {
    FileEdit result{edit.old_size, {}, edit.looked_at};
    for (const Splice& splice : edit.splices) {
        const std::string before = read_part(file, splice.offset, splice.size);
        const std::string_view after = splice.bytes;
        if (before.size() == after.size()) {
            add_differences(result, splice.offset, before, after);
            continue;
        }
        const std::size_t most = std::min(before.size(), after.size());
        const auto limit = static_cast<std::ptrdiff_t>(most);
        const auto start = static_cast<std::size_t>(
            std::mismatch(before.begin(), before.begin() + limit, after.begin()).first - before.begin());
        std::size_t tail = 0;
        while (tail < most - start && before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
            ++tail;
        result.splices.push_back({splice.offset + start, before.size() - start - tail,
                                  std::string(after.substr(start, after.size() - start - tail))});
    }
    return result;
}

std::string edited_bytes(const FileEdit& edit, std::string_view old_bytes) {
    std::string result;
    std::uint64_t place = 0;
    for (const Splice& splice : edit.splices) {
        result += old_bytes.substr(place, splice.offset - place);
        result += splice.bytes;
        place = splice.end();
    }
    return result += old_bytes.substr(place);
}

void merge_splices(const ByteSource& file, FileEdit& edit, std::size_t first, std::size_t last,
                   std::uint64_t start, std::uint64_t end) {
    Splice merged;
    merged.offset = std::min(start, edit.splices[first].offset);
    std::uint64_t place = merged.offset;
    for (std::size_t i = first; i <= last; ++i) {
        const Splice& splice = edit.splices[i];
        merged.bytes += read_part(file, place, splice.offset - place) + splice.bytes;
        place = splice.end();
    }
    if (end > place) {
        merged.bytes += read_part(file, place, end - place);
        place = end;
    }
    merged.size = place - merged.offset;
    const auto at = [&](std::size_t i) { return edit.splices.begin() + static_cast<std::ptrdiff_t>(i); };
    edit.splices.erase(at(first), at(last + 1));
    edit.splices.insert(at(first), std::move(merged));
}

} // namespace vantaro::core
