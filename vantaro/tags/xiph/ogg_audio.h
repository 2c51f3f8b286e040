// What an Ogg file says of its audio, in the stream's first packet and by the position of its last page:
// https://xiph.org/vorbis/doc/Vorbis_I_spec.html, https://www.rfc-editor.org/rfc/rfc7845,
// https://www.speex.org/docs/manual/speex-manual/, https://xiph.org/flac/ogg_mapping.html
//
// Any thread.
#pragma once

#include "vantaro/tags/audio/properties.h"

#include <cstdint>
#include <string_view>

namespace vantaro::core::tags {

struct OggAudio {
    std::string_view head;           ///< the first packet
    std::uint64_t first_granule = 0; ///< of the first page
    std::uint64_t last_granule = 0;  ///< of the last one
    std::size_t size = 0;            ///< the file without headers; 0 when it has other streams too
};

/// All throw exception_io_data when the first packet is damaged.
AudioProperties describe_vorbis(const OggAudio& audio);
AudioProperties describe_opus(const OggAudio& audio);
AudioProperties describe_speex(const OggAudio& audio);
/// `audio.head` is the content of STREAMINFO.
AudioProperties describe_ogg_flac(const OggAudio& audio);

} // namespace vantaro::core::tags
