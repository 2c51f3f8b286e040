// The formats, and how a file's is found out.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TagLib {
class IOStream;
}

namespace vantaro::core::tags {

enum class Format {
    mpeg,
    flac,
    vorbis,
    opus,
    ogg_flac,
    speex,
    mp4,
    wavpack,
    monkeys_audio,
    musepack,
    true_audio,
    wav,
    aiff,
    asf,
};

/// As users know it.
std::string_view format_name(Format format);
/// In lower case, without the dot.
std::vector<std::string> audio_extensions();
/// By the extension.
std::optional<Format> format_of_name(std::string_view path);
/// By the content that starts at `start`, behind ID3v2 tags; where that says nothing, by the extension of the
/// stream's name.
std::optional<Format> find_format(TagLib::IOStream& stream, std::size_t start);

} // namespace vantaro::core::tags
