// Bytes for files that are no music.
#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace vantaro::test {

/// Bytes that differ from place to place.
inline std::string pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 31 >> 4);
    return bytes;
}

/// Bytes that cannot be compressed.
inline std::string noise(std::size_t size) {
    std::mt19937 engine(1);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(engine());
    return bytes;
}

} // namespace vantaro::test
