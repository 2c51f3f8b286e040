// Facts about the audio, and how they become technical fields.
#pragma once

#include "host/api/track_info_record.h"

#include <cstddef>
#include <string>

namespace vantaro::core::tags {

class FileBytes;
class AudioFile;

/// Where the audio stands, without the tags around it.
struct AudioPart {
    std::size_t start = 0;
    std::size_t end = 0;

    std::size_t size() const { return end - start; }
};

/// What is empty or 0 is not known.
struct AudioProperties {
    std::string codec = {};
    std::string profile = {};
    std::string encoding = {}; ///< "lossless" or "lossy"
    int bitrate = 0;           ///< kbit/s
    int sample_rate = 0;       ///< Hz
    int channels = 0;
    int bits_per_sample = 0;
    double seconds = 0;
};

/// What the formats say of their audio; TagLib reads what is rare. `audio` is the format's own bytes. All
/// throw exception_io_data when the header is damaged.
AudioProperties describe_mpeg(FileBytes& file, const AudioPart& audio);
AudioProperties describe_aac(FileBytes& file, const AudioPart& audio);
AudioProperties describe_ac3(FileBytes& file, const AudioPart& audio);
AudioProperties describe_wavpack(FileBytes& file, const AudioPart& audio);
AudioProperties describe_monkeys_audio(FileBytes& file, const AudioPart& audio);
AudioProperties describe_musepack(FileBytes& file, const AudioPart& audio);
AudioProperties describe_true_audio(FileBytes& file, const AudioPart& audio);

/// Sets the technical fields and the length. Throws exception_io_data when the audio's header is damaged.
void set_technical_fields(AudioFile& file, TrackInfoRecord& info);

} // namespace vantaro::core::tags
