// The formats, a row each, and how a file's is found out.
//
// Adding a format: a row in formats.cpp, and what opens it, where none of the openers in audio_file.h does. A
// new kind of tag is a row of tag_kinds.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

class AudioFile;
class FileBytes;
struct Format;
struct TagKind;
struct AudioPart;
struct AudioProperties;

/// What files begin with; empty texts are nothing.
struct Signature {
    std::size_t at = 0;
    std::string_view text;
    std::string_view second = {}; ///< eight bytes in
};

struct Format {
    std::string_view name;       ///< as users know it
    std::string_view extensions; ///< in lower case, without the dot, with blanks between them
    std::string_view mime_types; ///< likewise
    std::array<Signature, 10> signatures;
    /// `start` is where the format's own bytes begin, behind ID3v2 tags.
    std::unique_ptr<AudioFile> (*open)(FileBytes& file, const Format& format, std::size_t start);
    /// The kind of tag that is added where there is none, by its name in tag_kinds.h.
    std::string_view customary_tag;
    /// For formats whose AudioFile does not know by itself; null where nobody can tell.
    AudioProperties (*describe)(FileBytes& file, const AudioPart& audio) = nullptr;
    bool carries_cue_sheet = false;
    /// R128_TRACK_GAIN counts where REPLAYGAIN_TRACK_GAIN is missing.
    bool has_r128_gain = false;
};

std::span<const Format> all_formats();
std::vector<std::string> audio_extensions();
/// By the extension; null when it is of none.
const Format* format_of_name(std::string_view path);
/// How many bytes signatures are looked for in.
constexpr std::size_t signature_area = 64;
bool has_signature(const Format& format, std::string_view head);
/// Whether what stands at `start` is one of the format's signatures.
bool begins_as(FileBytes& file, const Format& format, std::size_t start);
/// By the content that starts at `start`, behind ID3v2 tags; where that says nothing, by the extension.
const Format* find_format(FileBytes& file, std::size_t start);

} // namespace vantaro::core::tags
