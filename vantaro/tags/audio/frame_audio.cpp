// Audio that is nothing but a row of frames: AAC in ADTS (ISO/IEC 13818-7, 6.2), AC-3 and E-AC-3 (ETSI TS 102
// 366, 4.3 and E.1.2). Nothing says how many frames there are: the length is that of a file whose frames are
// as large as those at its beginning.
#include "vantaro/tags/audio/properties.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/numbers.h"

#include <array>
#include <optional>

namespace vantaro::core::tags {

namespace {

/// How much of the beginning is looked at.
constexpr std::size_t looked_at = 64 << 10;

struct Frame {
    std::size_t size = 0;
    int samples = 0;
    int sample_rate = 0;
    int channels = 0;
    std::string codec = {};
};

using ReadFrame = std::optional<Frame> (*)(std::string_view bytes);

std::optional<Frame> adts_frame(std::string_view bytes) {
    constexpr std::size_t header_size = 7;
    constexpr std::array<int, 13> rates{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                        22050, 16000, 12000, 11025, 8000,  7350};
    constexpr std::array<int, 8> channels{0, 1, 2, 3, 4, 5, 6, 8}; // 0: said elsewhere
    if (bytes.size() < header_size)
        return std::nullopt;
    const std::uint64_t header = big_endian(bytes.substr(0, header_size));
    const std::size_t rate = header >> 34 & 15;
    const std::size_t size = header >> 13 & 0x1FFF;
    if (header >> 44 != 0xFFF || (header >> 41 & 3) != 0 || rate >= rates.size() || size < header_size)
        return std::nullopt;
    const int blocks = static_cast<int>(header & 3) + 1;
    return Frame{size, 1024 * blocks, rates[rate], channels[header >> 30 & 7], "AAC"};
}

constexpr std::array<int, 3> ac3_rates{48000, 44100, 32000};
constexpr std::array<int, 8> ac3_channels{2, 1, 2, 3, 3, 4, 4, 5};

std::optional<Frame> eac3_frame(std::uint64_t header) {
    constexpr std::array<int, 4> blocks{1, 2, 3, 6};
    Frame frame{.codec = "E-AC-3"};
    frame.size = ((header >> 32 & 0x7FF) + 1) * 2;
    const std::size_t rate = header >> 30 & 3;
    const std::size_t half_rate_or_blocks = header >> 28 & 3;
    if (rate == 3 && half_rate_or_blocks == 3)
        return std::nullopt;
    frame.sample_rate = rate == 3 ? ac3_rates[half_rate_or_blocks] / 2 : ac3_rates[rate];
    frame.samples = 256 * (rate == 3 ? 6 : blocks[half_rate_or_blocks]);
    frame.channels = ac3_channels[header >> 25 & 7] + static_cast<int>(header >> 24 & 1);
    return frame;
}

std::optional<Frame> ac3_frame(std::string_view bytes) {
    constexpr std::size_t header_size = 8;
    constexpr std::array<unsigned, 19> bit_rates{32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                                 192, 224, 256, 320, 384, 448, 512, 576, 640};
    if (bytes.size() < header_size)
        return std::nullopt;
    const std::uint64_t header = big_endian(bytes.substr(0, header_size));
    const unsigned version = header >> 19 & 31;
    if (header >> 48 != 0x0B77 || version > 16)
        return std::nullopt;
    if (version > 10)
        return eac3_frame(header);
    const std::size_t rate = header >> 30 & 3;
    const std::size_t size_code = header >> 24 & 63;
    if (rate >= ac3_rates.size() || size_code / 2 >= bit_rates.size())
        return std::nullopt;
    Frame frame{.samples = 1536, .sample_rate = ac3_rates[rate], .codec = "AC-3"};
    const unsigned words = bit_rates[size_code / 2] * 96'000 / static_cast<unsigned>(frame.sample_rate);
    frame.size = 2 * std::size_t{words + (rate == 1 ? size_code % 2 : 0)};
    // Up to three pairs of bits on the mix stand between the mode and the channel of low frequencies.
    const unsigned mode = header >> 13 & 7;
    const unsigned mix_bits =
        mode == 2 ? 2 : ((mode & 1) != 0 && mode != 1 ? 2U : 0U) + ((mode & 4) != 0 ? 2U : 0U);
    frame.channels = ac3_channels[mode] + static_cast<int>(header >> (12 - mix_bits) & 1);
    return frame;
}

AudioProperties describe_frames(FileBytes& file, const AudioPart& audio, ReadFrame read_frame) {
    const std::string_view bytes = file.some(audio.start, std::min(audio.size(), looked_at));
    const std::optional<Frame> first = read_frame(bytes);
    if (!first)
        throw vantaro_io::exception_io_data("The first frame of the audio is missing");
    std::size_t size = 0;
    double samples = 0;
    for (std::optional<Frame> frame = first; frame; frame = read_frame(bytes.substr(size))) {
        samples += frame->samples;
        size += frame->size;
        if (size >= bytes.size())
            break;
    }
    if (size < bytes.size() && samples == first->samples)
        throw vantaro_io::exception_io_data("No other frame of audio follows the first one");
    AudioProperties result{.codec = first->codec, .encoding = "lossy"};
    result.sample_rate = first->sample_rate;
    result.channels = first->channels;
    const double bytes_a_second = static_cast<double>(size) / samples * first->sample_rate;
    result.bitrate = static_cast<int>(bytes_a_second * 8 / 1000 + 0.5);
    result.seconds = static_cast<double>(audio.size()) / bytes_a_second;
    return result;
}

} // namespace

AudioProperties describe_aac(FileBytes& file, const AudioPart& audio) {
    if (file.some(audio.start, 4) == "ADIF") // with one header, and no frames that could be told apart
        return {.codec = "AAC", .encoding = "lossy"};
    return describe_frames(file, audio, adts_frame);
}

AudioProperties describe_ac3(FileBytes& file, const AudioPart& audio) {
    return describe_frames(file, audio, ac3_frame);
}

} // namespace vantaro::core::tags
