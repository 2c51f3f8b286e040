// Facts about the audio, as technical fields.
#pragma once

#include "host/api/track_info_record.h"
#include "vantaro/tags/audio_file.h"

namespace vantaro::core::tags {

/// Sets the technical fields and the length. Throws exception_io_data when the audio's header is damaged.
void read_technical(TagLib::IOStream& stream, AudioFile& file, TrackInfoRecord& info);

/// The gains that fields name: REPLAYGAIN_TRACK_GAIN and its like, for Opus R128_TRACK_GAIN and
/// R128_ALBUM_GAIN where the others are missing.
ReplayGain find_replay_gain(const std::vector<TrackField>& fields, Format format);

} // namespace vantaro::core::tags
