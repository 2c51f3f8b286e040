// The metadata blocks of a FLAC file. All but the comment and the padding keep their bytes: seek table, cue
// sheet, pictures, application data.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace TagLib {
class IOStream;
}

namespace vantaro::core::tags {

class FlacBlocks {
public:
    /// `start` is where "fLaC" stands. `stream` outlives this. Throws exception_io_data.
    FlacBlocks(TagLib::IOStream& stream, std::size_t start);

    /// The content of the first comment block.
    std::optional<std::string> comment() const;
    /// Replaces the first comment block, or adds one behind the stream information, with padding behind all
    /// blocks (see padding.h). Throws exception_io when the comment is larger than a block can be.
    void write_comment(const std::string& comment);

private:
    struct Block {
        unsigned type;
        std::string body;
    };
    std::size_t size_with_headers() const;
    void append_padding(std::size_t size);

    TagLib::IOStream& stream_;
    std::size_t start_;
    std::size_t size_ = 0; ///< of all blocks in the file
    std::vector<Block> blocks_;
};

} // namespace vantaro::core::tags
