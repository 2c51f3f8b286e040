// The chunk "ds64" of RF64 and BW64 files: sizes for which 32 bits are too few.
//
//     Sizes64 sizes(body);
//     sizes.form += growth;
//     body = sizes.render(body);
//
// https://tech.ebu.ch/docs/tech/tech3306.pdf, https://www.itu.int/rec/R-REC-BS.2088
//
// Values; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

/// What a chunk has for its size when it stands here.
inline constexpr std::uint64_t no_size32 = 0xFFFFFFFF;

struct Sizes64 {
    struct Entry {
        std::string name; ///< empty: no longer in the table
        std::uint64_t size;
    };

    /// Throws exception_io_data when the body is too short for what it says.
    explicit Sizes64(std::string_view body);

    std::uint64_t form = 0;   ///< of the whole
    std::uint64_t audio = 0;  ///< of the chunk "data"
    std::vector<Entry> table; ///< of others; one name may stand there several times

    /// The body that `old` becomes, of the same size.
    std::string render(std::string_view old) const;
};

} // namespace vantaro::core::tags
