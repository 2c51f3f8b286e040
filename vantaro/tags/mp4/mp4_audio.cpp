#include "vantaro/tags/mp4/mp4_audio.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/xiph/flac_stream_info.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t largest_description = 1 << 16;

[[noreturn]] void refuse() {
    throw vantaro_io::exception_io_data("The description of the audio in the MP4 file is damaged");
}

/// Numbers and pieces from the front of a description; a missing one is damage.
struct Description {
    std::string_view bytes;

    std::string_view take_bytes(std::size_t size) {
        if (size > bytes.size())
            refuse();
        const std::string_view result = bytes.substr(0, size);
        bytes.remove_prefix(size);
        return result;
    }
    std::uint64_t take(std::size_t width) { return big_endian(take_bytes(width)); }
    void skip(std::size_t size) { take_bytes(size); }
    /// Of a descriptor in "esds": seven bits a byte. The tag comes first.
    void skip_tag_and_length(unsigned tag) {
        if (take(1) != tag)
            refuse();
        for (int i = 0; i < 4 && (take(1) & 0x80) != 0; ++i)
            ;
    }
};

Description content_of(const Mp4Atoms& atoms, const Mp4Atom& atom) {
    return {atoms.file().some(atom.content, std::min(atom.end - atom.content, largest_description))};
}

const Mp4Atom* find_sound(const Mp4Atoms& atoms) {
    const Mp4Atom* moov = atoms.find({"moov"});
    for (const Mp4Atom* track : atoms.children(*moov)) {
        const Mp4Atom* handler = track->name == "trak" ? atoms.find({"mdia", "hdlr"}, track) : nullptr;
        if (handler != nullptr && content_of(atoms, *handler).bytes.substr(0, 12).ends_with("soun"))
            return track;
    }
    return nullptr;
}

std::size_t size_of_data(Mp4Atoms& atoms) {
    atoms.read_rest();
    std::size_t size = 0;
    for (const Mp4Atom& atom : atoms.all())
        if (atom.parent == Mp4Atom::no_parent && atom.name == "mdat")
            size += atom.end - atom.start;
    return size;
}

// The stream's own header within "esds": what "mp4a" stands for, and its bit rate.
void describe_stream(Description stream, AudioProperties& audio) {
    stream.skip(4); // version and flags
    stream.skip_tag_and_length(3);
    stream.skip(2); // its number
    const std::uint64_t flags = stream.take(1);
    stream.skip((flags & 0x80) != 0 ? 2 : 0); // what it depends on
    if ((flags & 0x40) != 0)
        stream.skip(stream.take(1));          // an address
    stream.skip((flags & 0x20) != 0 ? 2 : 0); // whose clock it has
    stream.skip_tag_and_length(4);
    const std::uint64_t type = stream.take(1);
    stream.skip(8); // kind, buffer, highest bit rate
    if (const std::uint64_t bits = stream.take(4); bits != 0)
        audio.bitrate = static_cast<int>(bits / 1000 + 1); // rounded as TagLib does
    const bool is_aac = type == 0x40 || (type >= 0x66 && type <= 0x68);
    audio.codec = is_aac ? "AAC" : type == 0x69 || type == 0x6B ? "MP3" : "";
}

void describe_alac(Description cookie, AudioProperties& audio) {
    audio.codec = "ALAC";
    cookie.skip(4 + 5); // version and flags; the length of frames, its version
    audio.bits_per_sample = static_cast<int>(cookie.take(1));
    cookie.skip(3);
    audio.channels = static_cast<int>(cookie.take(1));
    cookie.skip(6);
    audio.bitrate = static_cast<int>((cookie.take(4) + 500) / 1000);
    audio.sample_rate = static_cast<int>(cookie.take(4) & 0x7FFFFFFF);
}

// https://www.opus-codec.org/docs/opus_in_isobmff.html
void describe_opus_head(Description head, AudioProperties& audio) {
    audio.codec = "Opus";
    audio.sample_rate = 48000; // whatever it was made from
    head.skip(1);
    audio.channels = static_cast<int>(head.take(1));
}

/// The modes of channels by their numbers, without the one for low frequencies.
constexpr std::array<int, 8> ac3_channels{2, 1, 2, 3, 3, 4, 4, 5};
constexpr std::array<int, 19> ac3_bit_rates{32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                            192, 224, 256, 320, 384, 448, 512, 576, 640};

// Both as ETSI TS 102 366, annex F, has them.
void describe_ac3(Description head, AudioProperties& audio) {
    audio.codec = "AC-3";
    const std::uint64_t bits = head.take(3);
    audio.channels = ac3_channels[bits >> 11 & 7] + static_cast<int>(bits >> 10 & 1);
    if (const std::size_t rate = bits >> 5 & 31; rate < ac3_bit_rates.size())
        audio.bitrate = ac3_bit_rates[rate];
}

void describe_eac3(Description head, AudioProperties& audio) {
    audio.codec = "E-AC-3";
    const std::uint64_t bits = head.take(4);
    audio.bitrate = static_cast<int>(bits >> 19);
    audio.channels = ac3_channels[bits >> 1 & 7] + static_cast<int>(bits & 1);
}

/// "FLAC" within a block of its own.
void describe_flac_block(Description block, AudioProperties& audio, std::size_t size) {
    const double seconds = audio.seconds;
    block.skip(4 + 4); // version and flags; the header of the block
    audio = describe_flac(block.bytes, size);
    if (audio.seconds == 0)
        audio.seconds = seconds;
}

// The first description of samples: what all kinds of audio have, then the codec's own atom.
void describe_samples(Mp4Atoms& atoms, Description all, AudioProperties& audio) {
    all.skip(8); // version and flags, count
    const std::optional<Mp4Child> entry = take_atom(all.bytes);
    if (!entry)
        refuse();
    Description samples{entry->body};
    samples.skip(8);
    const std::uint64_t version = samples.take(2);
    samples.skip(6);
    audio.channels = static_cast<int>(samples.take(2));
    samples.skip(6);
    if (const auto rate = static_cast<int>(samples.take(4) >> 16); rate > 0)
        audio.sample_rate = rate;
    if (version == 1) // QuickTime's
        samples.skip(16);
    std::string_view inner = samples.bytes;
    if (const std::string_view wave = find_atom(inner, "wave"); !wave.empty())
        inner = wave;
    const std::string_view name = entry->name;
    const auto own = [&](std::string_view atom) { return Description{find_atom(inner, atom)}; };
    if (name == "mp4a" && own("esds").bytes.empty())
        audio.codec = "AAC";
    else if (name == "mp4a")
        describe_stream(own("esds"), audio);
    else if (name == "alac")
        describe_alac(own("alac"), audio);
    else if (name == "fLaC")
        describe_flac_block(own("dfLa"), audio, size_of_data(atoms));
    else if (name == "Opus")
        describe_opus_head(own("dOps"), audio);
    else if (name == "ac-3")
        describe_ac3(own("dac3"), audio);
    else if (name == "ec-3")
        describe_eac3(own("dec3"), audio);
    else if (name == ".mp3")
        audio.codec = "MP3";
    if (!audio.codec.empty())
        audio.encoding = audio.bits_per_sample > 0 ? "lossless" : "lossy";
    if (audio.bitrate == 0 && !audio.codec.empty() && audio.seconds > 0)
        audio.bitrate =
            static_cast<int>(static_cast<double>(size_of_data(atoms)) * 8 / (audio.seconds * 1000));
}

} // namespace

AudioProperties describe_mp4(Mp4Atoms& atoms) {
    AudioProperties audio;
    const Mp4Atom* track = find_sound(atoms);
    const Mp4Atom* header = track == nullptr ? nullptr : atoms.find({"mdia", "mdhd"}, track);
    const Mp4Atom* samples = track == nullptr ? nullptr : atoms.find({"mdia", "minf", "stbl", "stsd"}, track);
    if (track == nullptr)
        return audio;
    if (header == nullptr || samples == nullptr)
        refuse();
    Description times = content_of(atoms, *header);
    const std::size_t width = times.take(4) >> 24 == 1 ? 8 : 4;
    times.skip(2 * width); // when it was made and changed
    const auto unit = static_cast<double>(times.take(4));
    const auto length = static_cast<double>(times.take(width));
    if (unit > 0)
        audio.seconds = std::floor(length * 1000.0 / unit + 0.5) / 1000.0;
    audio.sample_rate = static_cast<int>(std::min(unit, 1e6));
    const Description description = content_of(atoms, *samples);
    describe_samples(atoms, description, audio);
    return audio;
}

} // namespace vantaro::core::tags
