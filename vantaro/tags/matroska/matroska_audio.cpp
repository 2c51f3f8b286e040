#include "vantaro/tags/matroska/matroska_audio.h"

#include "vantaro/tags/matroska/ebml.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vantaro::core::tags {

namespace {

constexpr std::uint32_t track_id = 0xAE;
constexpr std::uint32_t uid_id = 0x73C5;
constexpr std::uint32_t type_id = 0x83;
constexpr std::uint32_t codec_id = 0x86;
constexpr std::uint32_t audio_id = 0xE1;
constexpr std::uint32_t rate_id = 0xB5;
constexpr std::uint32_t output_rate_id = 0x78B5;
constexpr std::uint32_t channels_id = 0x9F;
constexpr std::uint32_t bits_id = 0x6264;
constexpr std::uint32_t scale_id = 0x2AD7B1;
constexpr std::uint32_t duration_id = 0x4489;
constexpr std::uint64_t audio_type = 2;

struct Codec {
    std::string_view beginning; ///< of the identifier
    std::string_view name;
    bool is_lossless = false;
};
constexpr auto codecs = std::to_array<Codec>({
    {"A_FLAC", "FLAC", true},
    {"A_OPUS", "Opus"},
    {"A_VORBIS", "Vorbis"},
    {"A_AAC", "AAC"},
    {"A_EAC3", "E-AC-3"},
    {"A_AC3", "AC-3"},
    {"A_DTS", "DTS"},
    {"A_MPEG/L3", "MP3"},
    {"A_MPEG/L2", "MP2"},
    {"A_MPEG/L1", "MP1"},
    {"A_PCM", "PCM", true},
    {"A_ALAC", "ALAC", true},
    {"A_WAVPACK4", "WavPack", true},
    {"A_TTA1", "TTA", true},
    {"A_TRUEHD", "TrueHD", true},
});

std::uint64_t number(std::string_view body, std::uint64_t otherwise) {
    return body.empty() || body.size() > 8 ? otherwise : big_endian(body);
}

/// 0 for what no audio has.
int small(double value) {
    constexpr double most = 1e8;
    return value > 0 && value < most ? static_cast<int>(std::lround(value)) : 0;
}

} // namespace

MatroskaTrack first_audio_track(std::string_view tracks) {
    while (const std::optional<EbmlElement> track = take_element(tracks))
        if (track->id == track_id && number(find_child(track->body, type_id), 0) == audio_type)
            return {number(find_child(track->body, uid_id), 0), find_child(track->body, codec_id),
                    find_child(track->body, audio_id)};
    return {};
}

AudioProperties describe_matroska(const MatroskaTrack& track, std::string_view info, std::size_t file_size) {
    constexpr std::uint64_t usual_scale = 1'000'000;
    constexpr double nanoseconds = 1e9;
    constexpr double usual_rate = 8000;
    constexpr double longest = 1e8;
    AudioProperties result;
    const auto codec = std::ranges::find_if(
        codecs, [&](const Codec& row) { return track.codec.starts_with(row.beginning); });
    result.codec = codec == codecs.end() ? clean_text(track.codec) : std::string(codec->name);
    if (codec != codecs.end())
        result.encoding = codec->is_lossless ? "lossless" : "lossy";
    if (!track.audio.empty()) {
        double rate = ebml_float(find_child(track.audio, output_rate_id));
        if (!(rate > 0))
            rate = ebml_float(find_child(track.audio, rate_id));
        result.sample_rate = small(rate > 0 ? rate : usual_rate);
        result.channels = small(static_cast<double>(number(find_child(track.audio, channels_id), 1)));
        // Some programs put the decoder's there.
        if (result.encoding == "lossless")
            result.bits_per_sample = small(static_cast<double>(number(find_child(track.audio, bits_id), 0)));
    }
    const double seconds = ebml_float(find_child(info, duration_id))
                           * static_cast<double>(number(find_child(info, scale_id), usual_scale))
                           / nanoseconds;
    if (seconds > 0 && seconds < longest) {
        result.seconds = seconds;
        result.bitrate = small(static_cast<double>(file_size) * 8 / seconds / 1000);
    }
    return result;
}

} // namespace vantaro::core::tags
