#include "vantaro/common/checksum.h"

#include <zlib.h>

namespace vantaro::core {

std::uint32_t checksum(std::string_view bytes, std::uint32_t before) {
    return static_cast<std::uint32_t>(
        ::crc32_z(before, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
}

} // namespace vantaro::core
