#include "vantaro/tags/audio_file.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/id3v2_frames.h"
#include "vantaro/tags/stream_bytes.h"

namespace vantaro::core::tags {

namespace {

// Some programs have put several ID3v2 tags in front of a file.
std::size_t skip_id3v2_tags(TagLib::IOStream& stream) {
    const std::size_t end = stream_size(stream);
    std::size_t start = 0;
    while (const std::size_t size = id3v2_size(read_some(stream, start, 10))) {
        if (size > end - start)
            throw vantaro_io::exception_io_data();
        start += size;
    }
    return start;
}

} // namespace

std::unique_ptr<AudioFile> open_audio_file(TagLib::IOStream& stream) {
    const std::size_t start = skip_id3v2_tags(stream);
    const std::optional<Format> format = find_format(stream, start);
    if (!format)
        throw vantaro_io::exception_io_data();
    stream.seek(0); // where TagLib's RIFF expects it
    switch (*format) {
    case Format::vorbis:
    case Format::opus:
    case Format::ogg_flac:
    case Format::speex:
        return open_ogg_file(stream, *format);
    case Format::wav:
    case Format::aiff:
        return open_riff_file(stream, *format);
    case Format::mp4:
        return open_mp4_file(stream);
    case Format::asf:
        return open_asf_file(stream);
    case Format::mpeg:
    case Format::flac:
    case Format::wavpack:
    case Format::monkeys_audio:
    case Format::musepack:
    case Format::true_audio:
        break;
    }
    return open_wrapped_file(stream, *format, start);
}

} // namespace vantaro::core::tags
