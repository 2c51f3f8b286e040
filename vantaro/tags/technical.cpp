#include "vantaro/tags/technical.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/stream_bytes.h"

#include <aifffile.h>
#include <apefile.h>
#include <asffile.h>
#include <flacfile.h>
#include <id3v2framefactory.h>
#include <mp4file.h>
#include <mpcfile.h>
#include <mpegfile.h>
#include <oggflacfile.h>
#include <oggpageheader.h>
#include <opusfile.h>
#include <speexfile.h>
#include <trueaudiofile.h>
#include <vorbisfile.h>
#include <wavfile.h>
#include <wavpackfile.h>

#include <charconv>
#include <optional>

namespace vantaro::core::tags {

namespace {

struct Audio {
    std::string codec;
    std::string profile;
    bool lossless = false;
    int bits = 0;
};

Audio describe(const TagLib::MPEG::Properties& properties) {
    return {"MP" + std::to_string(properties.layer()), "", false, 0};
}
Audio describe(const TagLib::FLAC::Properties& properties) {
    return {"FLAC", "", true, properties.bitsPerSample()};
}
Audio describe(const TagLib::Vorbis::Properties&) {
    return {"Vorbis", "", false, 0};
}
Audio describe(const TagLib::Ogg::Opus::Properties&) {
    return {"Opus", "", false, 0};
}
Audio describe(const TagLib::Ogg::Speex::Properties&) {
    return {"Speex", "", false, 0};
}
Audio describe(const TagLib::MP4::Properties& properties) {
    const bool lossless = properties.codec() == TagLib::MP4::Properties::ALAC;
    return {lossless                                             ? "ALAC"
            : properties.codec() == TagLib::MP4::Properties::AAC ? "AAC"
                                                                 : "",
            "", lossless, lossless ? properties.bitsPerSample() : 0};
}
Audio describe(const TagLib::WavPack::Properties& properties) {
    return {"WavPack", "", properties.isLossless(), properties.bitsPerSample()};
}
Audio describe(const TagLib::APE::Properties& properties) {
    return {"Monkey's Audio", "", true, properties.bitsPerSample()};
}
Audio describe(const TagLib::MPC::Properties& properties) {
    return {"Musepack", "SV" + std::to_string(properties.mpcVersion()), false, 0};
}
Audio describe(const TagLib::TrueAudio::Properties& properties) {
    return {"TTA", "", true, properties.bitsPerSample()};
}
Audio describe(const TagLib::RIFF::WAV::Properties& properties) {
    constexpr int pcm = 1;
    constexpr int floating = 3;
    const bool known = properties.format() == pcm || properties.format() == floating;
    return {known ? "PCM" : "", properties.format() == floating ? "floating point" : "", known,
            properties.bitsPerSample()};
}
Audio describe(const TagLib::RIFF::AIFF::Properties& properties) {
    const std::string compression = from_taglib(TagLib::String(properties.compressionType()));
    const bool pcm = !properties.isAiffC() || compression == "NONE" || compression == "sowt";
    return {pcm ? "PCM" : compression, "", pcm, properties.bitsPerSample()};
}
Audio describe(const TagLib::ASF::Properties& properties) {
    const bool lossless = properties.codec() == TagLib::ASF::Properties::WMA9Lossless;
    return {"WMA", from_taglib(properties.codecName()), lossless, lossless ? properties.bitsPerSample() : 0};
}

void set_number(TrackInfoRecord& info, const char* name, int value) {
    if (value > 0)
        info.set_technical(name, std::to_string(value).c_str());
}

template <class File>
void take_properties(const File& file, TrackInfoRecord& info) {
    if (!file.isValid() || file.audioProperties() == nullptr || file.audioProperties()->sampleRate() <= 0)
        throw vantaro_io::exception_io_data();
    const auto& properties = *file.audioProperties();
    const Audio audio = describe(properties);
    if (!audio.codec.empty())
        info.set_technical("codec", audio.codec.c_str());
    if (!audio.profile.empty())
        info.set_technical("codec_profile", audio.profile.c_str());
    info.set_technical("encoding", audio.lossless ? "lossless" : "lossy");
    set_number(info, "bitrate", properties.bitrate());
    set_number(info, "samplerate", properties.sampleRate());
    set_number(info, "channels", properties.channels());
    set_number(info, "bitspersample", audio.bits);
    info.set_length(properties.lengthInMilliseconds() / 1000.0);
}

template <class File>
void read_file(TagLib::IOStream& stream, TrackInfoRecord& info) {
    const File file(&stream, true);
    take_properties(file, info);
}

template <class File>
void read_file_with_frames(TagLib::IOStream& stream, TrackInfoRecord& info) {
    const File file(&stream, TagLib::ID3v2::FrameFactory::instance(), true);
    take_properties(file, info);
}

// Programs that write as a stream leave the length in the FLAC header open. The last page's position tells
// it.
void read_ogg_flac(TagLib::IOStream& stream, TrackInfoRecord& info) {
    TagLib::Ogg::FLAC::File file(&stream, true);
    take_properties(file, info);
    const TagLib::Ogg::PageHeader* last = info.length() > 0 ? nullptr : file.lastPageHeader();
    if (last != nullptr && last->isValid() && last->absoluteGranularPosition() > 0)
        info.set_length(static_cast<double>(last->absoluteGranularPosition())
                        / file.audioProperties()->sampleRate());
}

void read_properties(TagLib::IOStream& stream, Format format, TrackInfoRecord& info) {
    switch (format) {
    case Format::mpeg:
        return read_file_with_frames<TagLib::MPEG::File>(stream, info);
    case Format::flac:
        return read_file_with_frames<TagLib::FLAC::File>(stream, info);
    case Format::vorbis:
        return read_file<TagLib::Ogg::Vorbis::File>(stream, info);
    case Format::opus:
        return read_file<TagLib::Ogg::Opus::File>(stream, info);
    case Format::ogg_flac:
        return read_ogg_flac(stream, info);
    case Format::speex:
        return read_file<TagLib::Ogg::Speex::File>(stream, info);
    case Format::mp4:
        return read_file<TagLib::MP4::File>(stream, info);
    case Format::wavpack:
        return read_file<TagLib::WavPack::File>(stream, info);
    case Format::monkeys_audio:
        return read_file<TagLib::APE::File>(stream, info);
    case Format::musepack:
        return read_file<TagLib::MPC::File>(stream, info);
    case Format::true_audio:
        return read_file<TagLib::TrueAudio::File>(stream, info);
    case Format::wav:
        return read_file<TagLib::RIFF::WAV::File>(stream, info);
    case Format::aiff:
        return read_file<TagLib::RIFF::AIFF::File>(stream, info);
    case Format::asf:
        return read_file<TagLib::ASF::File>(stream, info);
    }
}

bool carries_cue_sheet(Format format) {
    switch (format) {
    case Format::flac:
    case Format::ogg_flac:
    case Format::wavpack:
    case Format::monkeys_audio:
    case Format::musepack:
    case Format::true_audio:
        return true;
    default:
        return false;
    }
}

// "-6.54 dB": what stands behind the number is left out of account.
std::optional<float> number_of(const std::vector<TrackField>& fields, std::string_view name) {
    const Values* values = find_values(fields, name);
    if (values == nullptr || values->empty())
        return std::nullopt;
    std::string_view text = values->front();
    text.remove_prefix(std::min(text.find_first_not_of(" +"), text.size()));
    float number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

} // namespace

void read_technical(TagLib::IOStream& stream, AudioFile& file, TrackInfoRecord& info) {
    WindowStream audio(stream, file.audio_start(), file.audio_end(stream_size(stream)));
    read_properties(audio, file.format(), info);
    const std::string tool = file.tool();
    if (!tool.empty())
        info.set_technical("tool", tool.c_str());
    std::string kinds;
    for (const TagStore* tag : file.tags())
        kinds += (kinds.empty() ? "" : "|") + tag->kind();
    if (!kinds.empty())
        info.set_technical("tagtype", kinds.c_str());
    if (carries_cue_sheet(file.format()))
        info.set_technical("cue_embedded", info.find_field("CUESHEET") == no_field ? "no" : "yes");
}

ReplayGain find_replay_gain(const std::vector<TrackField>& fields, Format format) {
    // Opus counts in 256ths of a dB towards -23 LUFS, ReplayGain towards -18.
    constexpr float opus_scale = 256.0F;
    constexpr float opus_difference = 5.0F;
    ReplayGain gain;
    const auto take = [&](const char* name, const char* opus_name, float& value) {
        if (const auto number = number_of(fields, name))
            value = *number;
        else if (const auto opus = number_of(fields, opus_name); opus && format == Format::opus)
            value = *opus / opus_scale + opus_difference;
    };
    take("REPLAYGAIN_TRACK_GAIN", "R128_TRACK_GAIN", gain.track_gain);
    take("REPLAYGAIN_ALBUM_GAIN", "R128_ALBUM_GAIN", gain.album_gain);
    take("REPLAYGAIN_TRACK_PEAK", "", gain.track_peak);
    take("REPLAYGAIN_ALBUM_PEAK", "", gain.album_peak);
    return gain;
}

} // namespace vantaro::core::tags
