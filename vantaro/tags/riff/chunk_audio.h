// What chunks say of the audio.
//
// All throw exception_io_data, with the reason, when the chunk that describes it is missing or damaged. Any
// thread, one file at a time.
#pragma once

#include "vantaro/tags/audio/properties.h"
#include "vantaro/tags/riff/chunk_list.h"

#include <cstdint>

namespace vantaro::core::tags {

AudioProperties describe_wav(const ChunkList& chunks);
AudioProperties describe_aiff(const ChunkList& chunks);
/// https://www.sonicstudio.com/pdf/dsd/DSDIFF_1.5_Spec.pdf
AudioProperties describe_dsdiff(const ChunkList& chunks);

/// Sets rate and channels. Throws exception_io_data when the rate is none.
void set_rate(AudioProperties& audio, double rate, std::uint64_t channels);
/// Sets length and bitrate of `bytes` of audio. A length of 0 is not known.
void set_seconds(AudioProperties& audio, double seconds, std::uint64_t bytes);
/// A number that is stored as IEEE 754 has it, in eight bytes.
double float64(std::uint64_t bits);

} // namespace vantaro::core::tags
