// The objects of an ASF header: what TagLib does not tell of them, what it takes on trust, and the
// padding that it only carries along.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace TagLib {
class IOStream;
}

namespace vantaro::core::tags {

/// Throws exception_io_data when the header or one of its objects is larger than what holds it: TagLib would
/// replace as many bytes.
void check_asf(TagLib::IOStream& stream);

/// In bytes, as the header says. Throws exception_io_data when the file is too short for it.
std::uint64_t asf_header_size(TagLib::IOStream& stream);
/// Gives a header that stood in the place of `room` bytes the size that padding.h says. Throws
/// exception_io_data.
void pad_asf_header(TagLib::IOStream& stream, std::uint64_t room);

/// The attributes of the extended content description and how many values each has there. Empty when that
/// object stands in front of the metadata library, or the header is damaged.
std::map<std::string, std::size_t> values_behind_library(TagLib::IOStream& stream);

/// A text with a NUL in its middle. TagLib reads it up to there, and would write that.
struct LongText {
    std::string name;      ///< of the attribute
    std::size_t index = 0; ///< among the attributes of this name, in the order of the file
    std::u16string text;
};
/// Those of the attributes, and under "Title", "Author", "Copyright" and "Description" with the index 0 those
/// of the content description.
struct LongTexts {
    std::vector<LongText> attributes;
    std::vector<LongText> description;
};
LongTexts long_texts(TagLib::IOStream& stream);

} // namespace vantaro::core::tags
