// The checksum of journals. Any thread.
#pragma once

#include <cstdint>
#include <string_view>

namespace vantaro::core {

/// The CRC-32 of the bytes, as zlib computes it; `before` is that of the bytes in front of them.
std::uint32_t checksum(std::string_view bytes, std::uint32_t before = 0);

} // namespace vantaro::core
