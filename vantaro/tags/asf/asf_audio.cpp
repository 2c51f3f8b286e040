// What an ASF header says of the audio. Offsets count from the beginning of an object.
#include "vantaro/tags/asf/asf_header.h"
#include "vantaro/tags/numbers.h"

#include <algorithm>
#include <cmath>

namespace vantaro::core::tags {

namespace {

using namespace std::string_view_literals;

constexpr auto audio_guid = "\x40\x9E\x69\xF8\x4D\x5B\xCF\x11\xA8\xFD\x00\x80\x5F\x5C\x44\x2B"sv;
constexpr std::size_t longest_look = 4096; ///< at an object: what counts stands in its beginning

/// How the audio's header tells the codecs apart.
enum class Wave : unsigned { wma_voice = 0x000A, wma1 = 0x0160, wma2, wma_pro, wma_lossless };

unsigned number(std::string_view object, std::size_t at, std::size_t size) {
    return static_cast<unsigned>(little_endian(object.substr(at, size)));
}

void describe_stream(std::string_view object, AudioProperties& result) {
    if (result.sample_rate != 0 || object.size() < 94 || object.substr(24, 16) != audio_guid)
        return;
    const Wave format{number(object, 78, 2)};
    const bool lossless = format == Wave::wma_lossless;
    if (format == Wave::wma_voice || (format >= Wave::wma1 && format <= Wave::wma_lossless)) {
        result.codec = "WMA";
        result.encoding = lossless ? "lossless" : "lossy";
    }
    result.channels = static_cast<int>(number(object, 80, 2));
    result.sample_rate = static_cast<int>(number(object, 82, 4));
    result.bitrate = static_cast<int>(number(object, 86, 4) * 8.0 / 1000 + 0.5);
    result.bits_per_sample = lossless ? static_cast<int>(number(object, 92, 2)) : 0;
}

/// The first audio codec's name.
std::string codec_name(std::string_view object) {
    constexpr unsigned audio = 2;
    std::size_t at = 44;
    const auto length = [&](std::size_t unit) {
        return at + 2 <= object.size() ? number(object, at, 2) * unit : object.size();
    };
    while (at + 4 <= object.size()) {
        const unsigned type = number(object, at, 2);
        at += 2;
        if (type == audio && length(2) <= object.size() - at - 2) {
            const std::string name = from_asf_text(object.substr(at + 2, length(2)));
            const std::size_t first = name.find_first_not_of(" \t\n\r\v\f");
            return first == name.npos ? std::string()
                                      : name.substr(first, name.find_last_not_of(" \t\n\r\v\f") + 1 - first);
        }
        at += 2 + length(2);
        at += 2 + length(2);
        at += 2 + length(1);
    }
    return {};
}

/// The play duration counts tenths of microseconds, the preroll that it includes milliseconds.
double length_of(std::string_view object) {
    if (object.size() < 88)
        return 0;
    const auto duration = static_cast<double>(little_endian(object.substr(64, 8)));
    const auto preroll = static_cast<double>(little_endian(object.substr(80, 8)));
    return std::max(0.0, std::floor(duration / 10'000 - preroll + 0.5) / 1000);
}

} // namespace

AudioProperties describe_asf(const AsfHeader& header) {
    AudioProperties result;
    std::string profile;
    for (const AsfObject& object : header.objects) {
        if (object.kind == AsfKind::file_properties)
            result.seconds = length_of(object.bytes.head(longest_look));
        else if (object.kind == AsfKind::stream_properties)
            describe_stream(object.bytes.head(longest_look), result);
        else if (object.kind == AsfKind::codec_list && profile.empty())
            profile = codec_name(object.bytes.head(longest_look));
    }
    result.profile = profile;
    return result;
}

} // namespace vantaro::core::tags
