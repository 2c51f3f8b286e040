// An audio file with its tags in memory: what read_tags and write_tags work on.
#pragma once

#include "vantaro/tags/format.h"
#include "vantaro/tags/tag_store.h"

#include <memory>
#include <vector>

namespace TagLib {
class IOStream;
}

namespace vantaro::core::tags {

class AudioFile {
public:
    virtual ~AudioFile() = default;

    /// The tags that the file has, those first that decide what a field is.
    virtual std::vector<TagStore*> tags() = 0;
    /// Adds the tag that is customary for the format; null when the file has it already.
    virtual TagStore* add_customary_tag() = 0;
    /// Writes the tags back.
    virtual void save() = 0;
    /// The part of the stream that holds the audio, without the tags around it.
    virtual std::size_t audio_start() const { return 0; }
    virtual std::size_t audio_end(std::size_t stream_size) const { return stream_size; }
    /// The encoder, where the tag tells.
    virtual std::string tool() const { return {}; }

    Format format() const { return format_; }

protected:
    explicit AudioFile(Format format) : format_(format) {}

private:
    Format format_;
};

/// `stream` outlives the result. Throws exception_io_data when it is no audio file.
std::unique_ptr<AudioFile> open_audio_file(TagLib::IOStream& stream);

/// Those of the kinds of container; `start` is where the format's own bytes begin.
std::unique_ptr<AudioFile> open_wrapped_file(TagLib::IOStream& stream, Format format, std::size_t start);
std::unique_ptr<AudioFile> open_ogg_file(TagLib::IOStream& stream, Format format);
std::unique_ptr<AudioFile> open_riff_file(TagLib::IOStream& stream, Format format);
std::unique_ptr<AudioFile> open_mp4_file(TagLib::IOStream& stream);
std::unique_ptr<AudioFile> open_asf_file(TagLib::IOStream& stream);

} // namespace vantaro::core::tags
