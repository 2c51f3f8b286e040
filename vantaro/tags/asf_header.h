// The objects of an ASF header: what TagLib does not tell of them, and what it takes on trust.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace TagLib {
class IOStream;
}

namespace vantaro::core::tags {

/// Throws exception_io_data when the header or one of its objects is larger than what holds it: TagLib would
/// replace as many bytes.
void check_asf(TagLib::IOStream& stream);

/// The attributes of the extended content description and how many values each has there. Empty when that
/// object stands in front of the metadata library, or the header is damaged.
std::map<std::string, std::size_t> values_behind_library(TagLib::IOStream& stream);

} // namespace vantaro::core::tags
