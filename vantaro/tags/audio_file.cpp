#include "vantaro/tags/audio_file.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/id3v2/id3v2_frames.h"

namespace vantaro::core::tags {

namespace {

// Some programs have put several ID3v2 tags in front of a file.
std::size_t skip_id3v2_tags(FileBytes& file) {
    std::size_t start = 0;
    while (const std::size_t size = id3v2_size(file.some(start, id3v2_header_size))) {
        if (size > file.size() - start)
            throw vantaro_io::exception_io_data("The ID3v2 tag is longer than the file");
        start += size;
    }
    return start;
}

} // namespace

std::unique_ptr<AudioFile> open_audio_file(FileBytes& file) {
    const std::size_t start = skip_id3v2_tags(file);
    const Format* format = find_format(file, start);
    if (format == nullptr)
        throw vantaro_io::exception_io_data("The file is of no known audio format");
    return format->open(file, *format, start);
}

} // namespace vantaro::core::tags
