#include "vantaro/tags/riff/chunk_audio.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t largest_description = 4096;
constexpr double largest_int = std::numeric_limits<int>::max();

int whole(double number) {
    return static_cast<int>(std::clamp(number + 0.5, 0.0, largest_int));
}

std::string_view description(const ChunkList& chunks, std::string_view name, std::size_t least) {
    const Chunk* chunk = chunks.find(name);
    if (chunk == nullptr || chunk->size < least)
        throw vantaro_io::exception_io_data("The chunk \"" + std::string(name)
                                            + "\", which describes the audio, is "
                                            + (chunk == nullptr ? "missing" : "too short"));
    return chunks.head(*chunk, largest_description);
}

const Chunk& audio_chunk(const ChunkList& chunks) {
    const Chunk* chunk = chunks.find_audio();
    if (chunk == nullptr)
        throw vantaro_io::exception_io_data("The file has no audio");
    return *chunk;
}

/// Sign and exponent in two bytes, and a mantissa with all its bits.
double float80(std::string_view bytes) {
    const std::uint64_t top = big_endian(bytes.substr(0, 2));
    const auto mantissa = static_cast<double>(big_endian(bytes.substr(2, 8)));
    const double number = std::ldexp(mantissa, static_cast<int>(top & 0x7FFF) - 16383 - 63);
    return (top & 0x8000) != 0 ? -number : number;
}

} // namespace

double float64(std::uint64_t bits) {
    return std::bit_cast<double>(bits);
}

void set_rate(AudioProperties& audio, double rate, std::uint64_t channels) {
    if (!(rate >= 1.0 && rate < largest_int))
        throw vantaro_io::exception_io_data("The sampling rate of the audio is none");
    audio.sample_rate = whole(rate);
    audio.channels = static_cast<int>(std::min<std::uint64_t>(channels, std::numeric_limits<int>::max()));
}

void set_seconds(AudioProperties& audio, double seconds, std::uint64_t bytes) {
    // In milliseconds, as for other formats.
    const double exact = seconds * 1000.0;
    if (!(exact > 0 && exact < 1e15))
        return;
    audio.seconds = std::floor(exact + 0.5) / 1000.0;
    audio.bitrate = whole(static_cast<double>(bytes) * 8.0 / exact);
}

AudioProperties describe_wav(const ChunkList& chunks) {
    constexpr std::uint64_t pcm = 1;
    constexpr std::uint64_t floating = 3;
    constexpr std::uint64_t extensible = 0xFFFE;
    constexpr std::size_t subformat = 24;
    const std::string_view format = description(chunks, "fmt ", 16);
    const auto number = [&](std::size_t at, std::size_t size) {
        return little_endian(format.substr(at, size));
    };
    std::uint64_t kind = number(0, 2);
    if (kind == extensible)
        kind = format.size() < subformat + 2 ? 0 : number(subformat, 2);
    const bool known = kind == pcm || kind == floating;
    AudioProperties result{.codec = known ? "PCM" : "",
                           .profile = kind == floating ? "floating point" : "",
                           .encoding = known ? "lossless" : "lossy"};
    result.bits_per_sample = static_cast<int>(number(14, 2));
    set_rate(result, static_cast<double>(number(4, 4)), number(2, 2));

    const std::size_t bytes = audio_chunk(chunks).size;
    const Chunk* fact = chunks.find("fact");
    double frames = fact == nullptr ? 0 : static_cast<double>(little_endian(chunks.head(*fact, 4)));
    const auto sample_bytes = static_cast<std::size_t>((result.bits_per_sample + 7) / 8);
    if (const std::size_t frame = sample_bytes * static_cast<std::size_t>(result.channels);
        frame > 0 && (kind == pcm || (kind == floating && frames == 0)))
        frames = static_cast<double>(bytes / frame);
    double seconds = frames / result.sample_rate;
    if (const std::uint64_t byte_rate = number(8, 4); frames == 0 && byte_rate > 0)
        seconds = static_cast<double>(bytes) / static_cast<double>(byte_rate);
    set_seconds(result, seconds, bytes);
    return result;
}

AudioProperties describe_aiff(const ChunkList& chunks) {
    constexpr std::size_t compression_end = 23; // with the length of its name
    const std::string_view common = description(chunks, "COMM", 18);
    const std::string compression =
        common.size() < compression_end ? "NONE" : from_latin1(common.substr(18, 4));
    const bool pcm = compression == "NONE" || compression == "sowt";
    AudioProperties result{.codec = pcm ? "PCM" : compression, .encoding = pcm ? "lossless" : "lossy"};
    result.bits_per_sample = static_cast<int>(big_endian(common.substr(6, 2)));
    const double rate = float80(common.substr(8, 10));
    set_rate(result, rate, big_endian(common.substr(0, 2)));
    set_seconds(result, static_cast<double>(big_endian(common.substr(2, 4))) / rate,
                audio_chunk(chunks).size);
    return result;
}

AudioProperties describe_dsdiff(const ChunkList& chunks) {
    // The chunk "PROP" is a list of its own, behind the word "SND ".
    constexpr std::size_t name_size = 4;
    constexpr std::size_t header_size = 12;
    std::string_view rest = description(chunks, "PROP", name_size).substr(name_size);
    double rate = 0;
    std::uint64_t channels = 0;
    while (rest.size() >= header_size) {
        const std::string_view name = rest.substr(0, name_size);
        const std::uint64_t size = big_endian(rest.substr(name_size, 8));
        rest.remove_prefix(header_size);
        if (name == "FS  ")
            rate = static_cast<double>(big_endian(rest.substr(0, 4)));
        else if (name == "CHNL")
            channels = big_endian(rest.substr(0, 2));
        rest.remove_prefix(size >= rest.size() ? rest.size() : size + size % 2);
    }
    const Chunk& sound = audio_chunk(chunks);
    const bool compressed = sound.name == "DST ";
    AudioProperties result{.codec = compressed ? "DST" : "DSD", .encoding = "lossless", .bits_per_sample = 1};
    set_rate(result, rate, channels);
    double seconds = 0;
    if (!compressed && channels > 0) {
        seconds = static_cast<double>(sound.size) * 8.0 / static_cast<double>(channels) / rate;
    } else if (const std::string_view frames = chunks.head(sound, header_size + 6);
               frames.size() == header_size + 6 && frames.starts_with("FRTE")) {
        const std::uint64_t in_a_second = big_endian(frames.substr(header_size + 4, 2));
        if (in_a_second > 0)
            seconds = static_cast<double>(big_endian(frames.substr(header_size, 4)))
                      / static_cast<double>(in_a_second);
    }
    set_seconds(result, seconds, sound.size);
    return result;
}

} // namespace vantaro::core::tags
