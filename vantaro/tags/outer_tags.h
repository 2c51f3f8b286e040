// The tags around a file's audio: ID3v2 in front, APE and ID3v1 behind. Nearly any kind of file can have
// them.
//
//     OuterTags outer(file, start);
//     outer.audio();              // what is between them
//     outer.write(rewriting);
#pragma once

#include "vantaro/tags/ape/ape_fields.h"
#include "vantaro/tags/audio/properties.h"
#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/id3v2/id3v1_fields.h"
#include "vantaro/tags/id3v2/id3v2_fields.h"

#include <optional>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

class OuterTags {
public:
    /// `start` is where the format's own bytes begin, behind the ID3v2 tags, of which the first is looked
    /// into. Throws exception_io_data when a tag is damaged.
    OuterTags(FileBytes& file, std::size_t start);

    /// Those that are there: `customary`, by its name in tag_kinds.h, before the others.
    std::vector<TagStore*> tags(std::string_view customary);
    /// Null when it is there.
    TagStore* add(std::string_view customary);
    AudioPart audio() const { return {start_, ape_start_}; }
    /// Throws exception_io when a tag is larger than its kind allows.
    void write(Rewriting& rewriting) const;

private:
    void find_id3v1();
    void skip_lyrics3();
    void find_ape();

    FileBytes& file_;
    std::size_t start_;
    std::size_t end_; ///< where what has been found behind the audio begins
    std::size_t id3v2_room_ = 0;
    std::size_t ape_start_ = 0;
    std::size_t ape_size_ = 0;
    std::size_t id3v1_start_ = 0;
    std::optional<Id3v2Fields> id3v2_;
    std::optional<ApeFields> ape_;
    std::optional<Id3v1Fields> id3v1_;
};

} // namespace vantaro::core::tags
