// What an MP4 file says of its audio.
#pragma once

#include "vantaro/tags/audio/properties.h"
#include "vantaro/tags/mp4/mp4_atoms.h"

namespace vantaro::core::tags {

/// Of the first track of sound; nothing is known without one, and no codec where it is another than AAC,
/// ALAC, FLAC, Opus, AC-3, E-AC-3 or MP3. May read the rest of `atoms`. Throws exception_io_data when the
/// description is damaged.
AudioProperties describe_mp4(Mp4Atoms& atoms);

} // namespace vantaro::core::tags
