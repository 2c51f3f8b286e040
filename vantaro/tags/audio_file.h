// An audio file with its tags in memory: what read_tags and write_tags work on.
#pragma once

#include "vantaro/tags/audio/properties.h"
#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/formats.h"
#include "vantaro/tags/tag_store.h"

#include <memory>
#include <vector>

namespace vantaro::core::tags {

class AudioFile {
public:
    virtual ~AudioFile() = default;

    /// The tags that the file has, those first that decide what a field is.
    virtual std::vector<TagStore*> tags() = 0;
    /// Adds the tag that is customary for the format; null when the file has it already.
    virtual TagStore* add_customary_tag() = 0;
    /// What writes the tags back. Throws exception_io with the reason when the format cannot hold them.
    virtual FileEdit edit() = 0;
    /// What can be said of the audio. Throws exception_io_data when its header is damaged.
    virtual AudioProperties audio() = 0;
    /// The encoder, where the tag tells.
    virtual std::string tool() const { return {}; }

    const Format& format() const { return format_; }
    /// Those that the tags follow, also one that is added.
    const TagOptions& options() const { return options_; }
    void follow(const TagOptions& options) {
        options_ = options;
        for (TagStore* tag : tags())
            tag->follow(options_);
    }

protected:
    explicit AudioFile(const Format& format) : format_(format) {}

private:
    const Format& format_;
    TagOptions options_;
};

/// `file` outlives the result. Throws exception_io_data when it is no audio file.
std::unique_ptr<AudioFile> open_audio_file(FileBytes& file);

/// Those of the kinds of container; `start` is where the format's own bytes begin, behind ID3v2 tags.
/// Tags around the audio: ID3v2 in front, APE and ID3v1 behind.
std::unique_ptr<AudioFile> open_wrapped_file(FileBytes& file, const Format& format, std::size_t start);
/// The same with a Vorbis comment within.
std::unique_ptr<AudioFile> open_flac_file(FileBytes& file, const Format& format, std::size_t start);
std::unique_ptr<AudioFile> open_ogg_file(FileBytes& file, const Format& format, std::size_t start);
std::unique_ptr<AudioFile> open_riff_file(FileBytes& file, const Format& format, std::size_t start);
std::unique_ptr<AudioFile> open_dsf_file(FileBytes& file, const Format& format, std::size_t start);
std::unique_ptr<AudioFile> open_caf_file(FileBytes& file, const Format& format, std::size_t start);
std::unique_ptr<AudioFile> open_mp4_file(FileBytes& file, const Format& format, std::size_t start);
std::unique_ptr<AudioFile> open_matroska_file(FileBytes& file, const Format& format, std::size_t start);
std::unique_ptr<AudioFile> open_asf_file(FileBytes& file, const Format& format, std::size_t start);

} // namespace vantaro::core::tags
