// An ID3v2 tag as a list of raw frames (https://id3.org/id3v2.4.0-structure, https://id3.org/id3v2.3.0).
// Frames that an edit does not name are written back byte for byte, with their flags. Their bodies are ranges
// of the file: a picture is read by nobody who does not move it.
//
// An extended header, with its checksum of frames that are others after an edit, is not written back.
//
// What other programs have written against the rules is kept likewise: frames with names in lower case or
// with blanks; 2.2 names in a later tag ("TP1" and a NUL), which are read as the frames they stand for; plain
// sizes in 2.4, which become right; and whatever stands behind the last frame and is more than padding.
#pragma once

#include "vantaro/tags/file_bytes.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

struct Id3v2Frame {
    std::string id;
    std::uint16_t flags = 0;
    Part body;
    std::string stored_id = {}; ///< the name in the file, where `id` is only what it stands for
    /// What a compressed frame holds; nothing where that cannot be told, or is no field.
    std::optional<std::string> expanded = {};
};

struct Id3v2Tag {
    int version = 4; ///< 3 or 4: the second number of "2.3", "2.4"
    std::vector<Id3v2Frame> frames;
    std::string rest = {}; ///< what stands behind the frames, without padding
    bool was_v22 = false;  ///< what the rest means is lost in another version
};

/// Of the tag and of each frame.
inline constexpr std::size_t id3v2_header_size = 10;

/// Size of the tag that starts at the beginning of `bytes`, header and footer included; 0 when none does.
/// Needs the first ten bytes.
std::size_t id3v2_size(std::string_view bytes);

/// Reads the frames of a tag of `size` bytes, not the bodies of those that hold no field. The file outlives
/// the result. Version 2.2 is turned into 2.3. Throws exception_io_data for a version that it does not know,
/// and for an extended header that is longer than the tag.
Id3v2Tag parse_id3v2(FileBytes& file, std::size_t start, std::size_t size);

/// The bytes of a tag with padding, for the place of `room` bytes (see padding.h). A new tag leaves `beside`
/// bytes of its room to what is new with it, such as the header of a chunk. Padding makes the tag no larger
/// than `most` bytes. Throws exception_io when the tag is larger than ID3v2 allows, and when it has a rest
/// that would become something else, as always where the tag was 2.2.
std::vector<Part> render_id3v2(const Id3v2Tag& tag, std::size_t room, std::size_t beside = 0,
                               std::size_t most = std::numeric_limits<std::size_t>::max());

/// The frame's body with the coding that its flags name taken away; nothing when it is encrypted, or
/// compressed and not expanded.
std::optional<std::string> frame_content(const Id3v2Tag& tag, const Id3v2Frame& frame);
/// Whether there is one; the body is not read.
bool has_content(const Id3v2Tag& tag, const Id3v2Frame& frame);

/// Turns the structure of a 2.3 tag into that of 2.4: flags, and the frames within chapters. Frames whose
/// meaning differs are the caller's. Throws Refused when a frame is encrypted, and when there is a rest.
void restructure_as_v24(Id3v2Tag& tag);

} // namespace vantaro::core::tags
