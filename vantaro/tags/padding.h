// How much room a tag gets in its file, so that the next edit finds its place.
//
//     const std::size_t size = padded_size(bytes.size(), old_size, {.header = 4});
//     // write `bytes`, and what is left of `size` as padding
//
// The policy:
// - What fits in the room that is there takes exactly that room, also when the tag becomes smaller: the file
//   keeps its length, and little more than the tag's own bytes change. Nothing behind the tag moves.
// - What does not fit gets the old room and as many whole blocks of the file system as leave 1 KiB of
//   padding. The file then grows by whole blocks, which some file systems insert without moving what stands
//   behind. A new tag is one whose old room is nothing.
// - Padding is never given back, unless the whole tag goes.
// - A format's limit comes first: a tag that fits only without padding is written without.
//
// What counts as room:
// - ID3v2: the tag. In WAV, RF64, AIFF and DSDIFF what its chunk holds, or all of the chunk when that is new.
// - CAF: the chunk "info" with the chunks "free" behind it, which are merged to one; none at the end of the
// file.
// - FLAC: all metadata blocks. Padding blocks are merged to one, the last.
// - MP4: the item list with the "free" atoms beside it, which are merged to one behind the list. New atoms
//   around a new list count too.
// - Vorbis, Opus, Speex: the comment's packet, with zero bytes behind the comments. It grows by steps of 4080
//   bytes, which are a block together with their lacing values. The file grows by whole blocks as long as the
//   number of its pages stays, which it does where they hold the packet.
// - Matroska: the Tags element with the Void elements behind it. Where other elements stand behind those, the
//   tags go to the end of the segment as new ones, and leave a Void element.
// - ASF: the header object. Padding objects directly within it are merged to one, the last.
//
// APE tags, ID3v1 and LIST INFO have none: they stand at the end of the file, or no form for padding exists.
// Neither has Ogg FLAC, where padding would be a packet of its own.
//
// All functions may be called from any thread.
#pragma once

#include <cstddef>
#include <limits>

namespace vantaro::core::tags {

/// A multiple of the block size of the usual file systems.
constexpr std::size_t whole_block = 4096;

/// What a format's padding looks like. All in bytes.
struct PaddingForm {
    std::size_t header = 0;                                      ///< of the smallest padding possible
    std::size_t step = whole_block;                              ///< by which room grows
    std::size_t limit = std::numeric_limits<std::size_t>::max(); ///< of the room
};

/// The size, with padding, of a tag of `needed` bytes in the place of `room` bytes. What is beyond `needed`
/// is either nothing or enough for the header of padding. `needed` itself when the limit leaves no padding,
/// even when it is above the limit.
std::size_t padded_size(std::size_t needed, std::size_t room, const PaddingForm& form);

} // namespace vantaro::core::tags
