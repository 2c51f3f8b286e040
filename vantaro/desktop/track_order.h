// The order of tracks by a column.
//
//     std::vector<std::uint32_t> order = order_by(Column::album, Qt::DescendingOrder, tracks, abort);
//     // order[0] is the index of the track that comes first
//
// Any thread.
#pragma once

#include "host/api/abort_flag.h"
#include "vantaro/desktop/columns.h"

#include <Qt>

#include <cstdint>
#include <vector>

namespace vantaro::core {

/// Numbers by their value, texts as people sort them. Tracks that are equal keep their order, also in a
/// descending one. Returns nothing when `abort` is set meanwhile.
std::vector<std::uint32_t> order_by(Column column, Qt::SortOrder direction,
                                    const std::vector<const Track*>& tracks, const AbortFlag& abort);

} // namespace vantaro::core
