// Numbers as files store them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vantaro::core::tags {

/// Requires: at most eight bytes.
constexpr std::uint64_t big_endian(std::string_view bytes) {
    std::uint64_t result = 0;
    for (const char c : bytes)
        result = result << 8 | static_cast<unsigned char>(c);
    return result;
}

/// Likewise.
constexpr std::uint64_t little_endian(std::string_view bytes) {
    std::uint64_t result = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        result = result << 8 | static_cast<unsigned char>(bytes[i]);
    return result;
}

/// The last `size` bytes of the value, at most eight.
inline std::string big_endian_bytes(std::uint64_t value, std::size_t size) {
    std::string result(size, '\0');
    for (std::size_t i = size; i-- > 0; value >>= 8)
        result[i] = static_cast<char>(value & 0xFF);
    return result;
}

/// Likewise.
inline std::string little_endian_bytes(std::uint64_t value, std::size_t size) {
    std::string result(size, '\0');
    for (std::size_t i = 0; i < size; ++i, value >>= 8)
        result[i] = static_cast<char>(value & 0xFF);
    return result;
}

} // namespace vantaro::core::tags
