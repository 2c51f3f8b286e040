#include "vantaro/tags/xiph/flac_stream_info.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/numbers.h"

#include <cmath>
#include <cstdint>

namespace vantaro::core::tags {

AudioProperties describe_flac(std::string_view info, std::size_t audio_size) {
    constexpr std::size_t least_size = 18;
    constexpr std::size_t packed = 10; // rate, channels, bits and samples share eight bytes
    if (info.size() < least_size)
        throw vantaro_io::exception_io_data("The FLAC stream information is damaged");
    const std::uint64_t bits = big_endian(info.substr(packed, 8));
    AudioProperties result{.codec = "FLAC", .encoding = "lossless"};
    result.sample_rate = static_cast<int>(bits >> 44);
    result.channels = static_cast<int>(bits >> 41 & 7) + 1;
    result.bits_per_sample = static_cast<int>(bits >> 36 & 31) + 1;
    if (result.sample_rate == 0)
        throw vantaro_io::exception_io_data("The FLAC stream information is damaged");
    const std::uint64_t samples = bits & 0xFFFFFFFFF;
    // In milliseconds, as TagLib counts for other formats.
    const double milliseconds = std::floor(static_cast<double>(samples) * 1000.0 / result.sample_rate + 0.5);
    result.seconds = milliseconds / 1000.0;
    if (samples > 0)
        result.bitrate = static_cast<int>(static_cast<double>(audio_size) * 8.0 / milliseconds + 0.5);
    return result;
}

} // namespace vantaro::core::tags
