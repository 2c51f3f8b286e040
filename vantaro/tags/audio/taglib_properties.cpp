// What TagLib says of the audio.
#include "vantaro/tags/audio/properties.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/audio/taglib_stream.h"
#include "vantaro/tags/text.h"

#include <apefile.h>
#include <mpcfile.h>
#include <trueaudiofile.h>
#include <wavpackfile.h>

namespace vantaro::core::tags {

namespace {

struct Audio {
    std::string codec;
    std::string profile;
    bool lossless = false;
    int bits = 0;
};

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

template <class File>
AudioProperties take_properties(const File& file, const TagLibStream& stream) {
    stream.check();
    if (!file.isValid() || file.audioProperties() == nullptr || file.audioProperties()->sampleRate() <= 0)
        throw vantaro_io::exception_io_data("The header of the audio is missing or damaged");
    const auto& properties = *file.audioProperties();
    const Audio audio = describe(properties);
    return {audio.codec,
            audio.profile,
            audio.lossless ? "lossless" : "lossy",
            properties.bitrate(),
            properties.sampleRate(),
            properties.channels(),
            audio.bits,
            properties.lengthInMilliseconds() / 1000.0};
}

template <class File>
AudioProperties read_file(FileBytes& bytes, const AudioPart& audio) {
    TagLibStream stream(bytes, audio.start, audio.end);
    const File file(&stream, true);
    return take_properties(file, stream);
}

} // namespace

AudioProperties describe_wavpack(FileBytes& file, const AudioPart& audio) {
    return read_file<TagLib::WavPack::File>(file, audio);
}
AudioProperties describe_monkeys_audio(FileBytes& file, const AudioPart& audio) {
    return read_file<TagLib::APE::File>(file, audio);
}
AudioProperties describe_musepack(FileBytes& file, const AudioPart& audio) {
    return read_file<TagLib::MPC::File>(file, audio);
}
AudioProperties describe_true_audio(FileBytes& file, const AudioPart& audio) {
    return read_file<TagLib::TrueAudio::File>(file, audio);
}

} // namespace vantaro::core::tags
