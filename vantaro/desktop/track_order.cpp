#include "vantaro/desktop/track_order.h"

#include "vantaro/locations/natural_order.h"

#include <algorithm>
#include <compare>
#include <numeric>

namespace vantaro::core {

namespace {

/// The texts are natural_sort_keys.
bool comes_before(const SortKey& a, const SortKey& b) {
    if (a.number != b.number)
        return a.number < b.number;
    return a.text < b.text;
}

} // namespace

std::vector<std::uint32_t> order_by(Column column, Qt::SortOrder direction,
                                    const std::vector<const Track*>& tracks, const AbortFlag& abort) {
    std::vector<SortKey> keys;
    keys.reserve(tracks.size());
    for (const Track* track : tracks) {
        keys.push_back(sort_key(column, *track));
        if (abort.is_aborting())
            return {};
        // "3/12" and "03" are the same number, and stay in the order in which they are.
        if (column_info(column).is_number && keys.back().number >= 0)
            keys.back().text.clear();
        else
            keys.back().text = natural_sort_key(keys.back().text);
    }
    std::vector<std::uint32_t> order(tracks.size());
    std::iota(order.begin(), order.end(), 0U);
    // A sort that is not wanted any more ends fast when everything is equal.
    const auto before = [&](std::uint32_t a, std::uint32_t b) {
        return !abort.is_aborting() && comes_before(keys[a], keys[b]);
    };
    if (direction == Qt::AscendingOrder)
        std::ranges::stable_sort(order, before);
    else
        std::ranges::stable_sort(order, [&](std::uint32_t a, std::uint32_t b) { return before(b, a); });
    if (abort.is_aborting())
        return {};
    return order;
}

} // namespace vantaro::core
