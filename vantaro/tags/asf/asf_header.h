// The header object of an ASF file: its objects, and the attributes that some of them list.
//
//     AsfHeader header = read_asf_header(file, start);
//     header.objects.front().kind;
//     write_asf_header(header, file, rewriting);
//
// Objects are kept as the parts of the file that they are; those of attributes are rendered anew when
// is_edited says so. All functions may be called from any thread.
//
// The format: https://learn.microsoft.com/windows/win32/wmformat/overview-of-the-asf-format
#pragma once

#include "vantaro/tags/audio/properties.h"
#include "vantaro/tags/file_bytes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

/// `other` is what stands where it does not belong, too.
enum class AsfKind : unsigned char {
    other,
    padding,
    file_properties,
    stream_properties,
    codec_list,
    content_description,
    extended_description,
    header_extension,
    metadata, ///< this and the next only within the header extension
    metadata_library,
};

/// The numbers are those of the format.
enum class AsfType : std::uint16_t { text, bytes, boolean, dword, qword, word, guid };

struct AsfAttribute {
    std::string name = {}; ///< in UTF-8, up to the first NUL
    Part stored_name = {}; ///< as the file has it: UTF-16 with the low byte first
    AsfType type{};        ///< other numbers are possible
    unsigned language{};   ///< an index of the language list
    unsigned stream{};     ///< 0 stands for the file
    Part value = {};
};

struct AsfObject {
    AsfKind kind = AsfKind::other;
    Part bytes; ///< all of the object in the file; nothing when it is new
    /// Of a content description: as many as asf_content_names.
    std::vector<AsfAttribute> attributes = {};
    Part rest = {}; ///< what stands behind the attributes, or behind the objects of the extension
    bool is_edited = false;
};

struct AsfHeader {
    std::size_t start = 0;
    std::size_t size = 0; ///< in the file
    std::vector<AsfObject> objects = {};
    std::vector<AsfObject> extension = {}; ///< those within the first header extension
    Part rest = {};                        ///< what stands behind the objects
};

/// What a content description holds, in its order. The last one, a rating, is no field and has no name here.
inline constexpr std::array<std::string_view, 5> asf_content_names{"Title", "Author", "Copyright",
                                                                   "Description", ""};
/// In bytes, of a text with its NUL: larger ones only fit a metadata library, larger names nowhere.
constexpr std::size_t asf_short_size = 0xFFFF;

/// The objects of a header that list attributes, in the order in which values count: content description,
/// extended description, the extension's.
template <class Header>
auto attribute_lists(Header& header) {
    std::vector<decltype(header.objects.data())> lists;
    for (const AsfKind kind : {AsfKind::content_description, AsfKind::extended_description})
        for (auto& object : header.objects)
            if (object.kind == kind)
                lists.push_back(&object);
    for (auto& object : header.extension)
        if (object.kind == AsfKind::metadata || object.kind == AsfKind::metadata_library)
            lists.push_back(&object);
    return lists;
}

/// Up to the first NUL.
std::string from_asf_text(std::string_view bytes);
/// With a NUL at the end.
std::string to_asf_text(const std::string& utf8);

/// `file` outlives the result. Throws exception_io_data when the header is damaged, and whatever reading the
/// file throws.
AsfHeader read_asf_header(FileBytes& file, std::size_t start);
/// Gives the header the size that padding.h says. Throws exception_io when it is more than can be read back.
void write_asf_header(const AsfHeader& header, FileBytes& file, Rewriting& rewriting);

/// What the header says of the first audio stream.
AudioProperties describe_asf(const AsfHeader& header);

} // namespace vantaro::core::tags
