// What a FLAC stream says of its audio, in FLAC files, in Ogg and in MP4.
#pragma once

#include "vantaro/tags/audio/properties.h"

#include <string_view>

namespace vantaro::core::tags {

/// `info` is the content of the block STREAMINFO (https://www.rfc-editor.org/rfc/rfc9639#section-8.2),
/// `audio_size` that of the frames, in bytes. Throws exception_io_data when it is damaged.
AudioProperties describe_flac(std::string_view info, std::size_t audio_size);

} // namespace vantaro::core::tags
