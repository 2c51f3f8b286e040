#include "vantaro/tags/xiph/ogg_audio.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/xiph/flac_stream_info.h"

#include <cmath>

namespace vantaro::core::tags {

namespace {

int number_at(std::string_view head, std::size_t at, std::size_t size = 4) {
    if (head.size() < at + size)
        throw vantaro_io::exception_io_data("The header of the audio is too short");
    return static_cast<int>(static_cast<std::uint32_t>(little_endian(head.substr(at, size))));
}

void set_length(AudioProperties& result, const OggAudio& audio, int rate, int skipped, int nominal) {
    if (rate <= 0)
        throw vantaro_io::exception_io_data("The header of the audio names no sample rate");
    const auto first = static_cast<std::int64_t>(audio.first_granule);
    const auto last = static_cast<std::int64_t>(audio.last_granule);
    if (first >= 0 && last > first && last - first > skipped) {
        const double milliseconds = static_cast<double>(last - first - skipped) * 1000.0 / rate;
        result.seconds = std::floor(milliseconds + 0.5) / 1000.0;
        const double bitrate = static_cast<double>(audio.size) * 8.0 / milliseconds + 0.5;
        result.bitrate = bitrate < 1e9 ? static_cast<int>(bitrate) : 0;
    }
    if (result.bitrate == 0 && nominal > 0)
        result.bitrate = static_cast<int>(nominal / 1000.0 + 0.5);
}

} // namespace

AudioProperties describe_vorbis(const OggAudio& audio) {
    AudioProperties result{.codec = "Vorbis", .encoding = "lossy"};
    result.channels = number_at(audio.head, 11, 1);
    result.sample_rate = number_at(audio.head, 12);
    set_length(result, audio, result.sample_rate, 0, number_at(audio.head, 20));
    return result;
}

AudioProperties describe_opus(const OggAudio& audio) {
    constexpr int opus_rate = 48000; // whatever it was before
    AudioProperties result{.codec = "Opus", .encoding = "lossy"};
    result.channels = number_at(audio.head, 9, 1);
    result.sample_rate = opus_rate;
    set_length(result, audio, opus_rate, number_at(audio.head, 10, 2), 0);
    return result;
}

AudioProperties describe_speex(const OggAudio& audio) {
    AudioProperties result{.codec = "Speex", .encoding = "lossy"};
    result.sample_rate = number_at(audio.head, 36);
    result.channels = number_at(audio.head, 48);
    set_length(result, audio, result.sample_rate, 0, number_at(audio.head, 52));
    return result;
}

// Programs that write as a stream leave the length in the FLAC header open. The last page's position tells
// it.
AudioProperties describe_ogg_flac(const OggAudio& audio) {
    AudioProperties result = describe_flac(audio.head, audio.size);
    if (result.seconds <= 0 && static_cast<std::int64_t>(audio.last_granule) > 0)
        result.seconds = static_cast<double>(audio.last_granule) / result.sample_rate;
    return result;
}

} // namespace vantaro::core::tags
