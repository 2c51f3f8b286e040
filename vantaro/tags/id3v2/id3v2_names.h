// Which frames stand for which fields where the table of id3v2_places.h does not tell.
#pragma once

#include "vantaro/tags/id3v2/id3v2_frames.h"
#include "vantaro/tags/number_pair.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantaro::core::tags {

/// False for frames that hold no field, so that pictures and other large ones need not be copied.
bool may_hold_field(std::string_view id);
/// A frame whose content is an address without a description.
bool is_web_frame(std::string_view id);
bool is_date_frame(const Id3v2Frame& frame);

/// The number and total that TRCK, TPOS or MVIN hold; null for other frames.
const PairNames* pair_of_frame(std::string_view id);
std::string_view frame_of_pair(const PairNames& names);

/// COMM, USLT or WXXX for COMMENT, COMMENT:X, LYRICS and so on; empty for other fields.
std::string_view described_frame(std::string_view name);
/// COMMENT, LYRICS or URL.
std::string field_of_frame(std::string_view id);
/// The whole name with the description.
std::string described_name(std::string_view field, const std::string& description);

/// TYER, TDAT (day and month) and TIME of a date that they express exactly; else TYER with the whole text.
std::vector<std::pair<std::string, std::string>> v23_date(const std::string& date);

} // namespace vantaro::core::tags
