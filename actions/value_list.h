// Lists in one text, entries separated by ";", taken as they stand: no trimming, an empty entry is an entry.
//
//     bool found = any_entry(list, [&](std::string_view entry) { return entry == value; });
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "host/api/track_info.h"

namespace quorvex {

/// Whether `matches(entry)` holds for an entry; those behind the first such entry are not asked.
template <class Matches>
bool any_entry(std::string_view list, Matches&& matches) {
    while (true) {
        const std::size_t end = list.find(';');
        if (matches(list.substr(0, end)))
            return true;
        if (end == std::string_view::npos)
            return false;
        list.remove_prefix(end + 1);
    }
}

/// A mask over positions, each of which can be marked.
class MarkedPositions final : public vantaro::Mask {
public:
    explicit MarkedPositions(std::size_t count) : marked_(count) {}
    void mark(std::size_t index) { marked_[index] = true; }
    bool selects(std::size_t index) const override { return marked_[index]; }

private:
    std::vector<bool> marked_;
};

} // namespace quorvex
