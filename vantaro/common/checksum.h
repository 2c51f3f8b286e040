// The checksum of journals. Any thread.
#pragma once

#include <cstdint>
#include <string_view>

namespace vantaro::core {

/// The CRC-32 of the bytes, as zlib computes it.
std::uint32_t checksum(std::string_view bytes);

} // namespace vantaro::core
