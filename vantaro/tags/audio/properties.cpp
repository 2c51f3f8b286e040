#include "vantaro/tags/audio/properties.h"

#include "vantaro/tags/audio_file.h"

#include <charconv>
#include <optional>

namespace vantaro::core::tags {

namespace {

void set_text(TrackInfoRecord& info, const char* name, const std::string& text) {
    if (!text.empty())
        info.set_technical(name, text.c_str());
}

void set_number(TrackInfoRecord& info, const char* name, int value) {
    if (value > 0)
        info.set_technical(name, std::to_string(value).c_str());
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

/// The gains that fields name.
ReplayGain find_replay_gain(const std::vector<TrackField>& fields, const Format& format) {
    // Opus counts in 256ths of a dB towards -23 LUFS, ReplayGain towards -18.
    constexpr float opus_scale = 256.0F;
    constexpr float opus_difference = 5.0F;
    ReplayGain gain;
    const auto take = [&](const char* name, const char* opus_name, float& value) {
        if (const auto number = number_of(fields, name))
            value = *number;
        else if (const auto opus = number_of(fields, opus_name); opus && format.has_r128_gain)
            value = *opus / opus_scale + opus_difference;
    };
    take("REPLAYGAIN_TRACK_GAIN", "R128_TRACK_GAIN", gain.track_gain);
    take("REPLAYGAIN_ALBUM_GAIN", "R128_ALBUM_GAIN", gain.album_gain);
    take("REPLAYGAIN_TRACK_PEAK", "", gain.track_peak);
    take("REPLAYGAIN_ALBUM_PEAK", "", gain.album_peak);
    return gain;
}

} // namespace

void set_technical_fields(AudioFile& file, TrackInfoRecord& info) {
    const AudioProperties audio = file.audio();
    set_text(info, "codec", audio.codec);
    set_text(info, "codec_profile", audio.profile);
    set_text(info, "encoding", audio.encoding);
    set_number(info, "bitrate", audio.bitrate);
    set_number(info, "samplerate", audio.sample_rate);
    set_number(info, "channels", audio.channels);
    set_number(info, "bitspersample", audio.bits_per_sample);
    info.set_length(audio.seconds);
    set_text(info, "tool", file.tool());
    std::string kinds;
    for (const TagStore* tag : file.tags())
        kinds += (kinds.empty() ? "" : "|") + tag->kind();
    set_text(info, "tagtype", kinds);
    if (file.format().carries_cue_sheet)
        info.set_technical("cue_embedded", info.find_field("CUESHEET") == no_field ? "no" : "yes");
    info.set_replay_gain(find_replay_gain(info.fields(), file.format()));
}

} // namespace vantaro::core::tags
