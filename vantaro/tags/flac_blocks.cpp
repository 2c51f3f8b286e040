#include "vantaro/tags/flac_blocks.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/stream_bytes.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr unsigned info_type = 0;
constexpr unsigned padding_type = 1;
constexpr unsigned comment_type = 4;
constexpr std::size_t header_size = 4;
constexpr std::size_t largest_block = 0xFFFFFF;

} // namespace

FlacBlocks::FlacBlocks(TagLib::IOStream& stream, std::size_t start) : stream_(stream), start_(start + 4) {
    if (read_bytes(stream, start, 4) != "fLaC")
        throw vantaro_io::exception_io_data();
    for (bool last = false; !last;) {
        const std::string header = read_bytes(stream, start_ + size_, header_size);
        const auto byte = [&](std::size_t i) {
            return static_cast<std::size_t>(static_cast<unsigned char>(header[i]));
        };
        last = (byte(0) & 0x80) != 0;
        const std::size_t size = byte(1) << 16 | byte(2) << 8 | byte(3);
        // The first block and no other: a file with a hole would have billions of empty ones.
        if (((byte(0) & 0x7F) == info_type) != blocks_.empty())
            throw vantaro_io::exception_io_data();
        blocks_.push_back(
            {static_cast<unsigned>(byte(0) & 0x7F), read_bytes(stream, start_ + size_ + header_size, size)});
        size_ += header_size + size;
    }
}

std::optional<std::string> FlacBlocks::comment() const {
    const auto found = std::ranges::find(blocks_, comment_type, &Block::type);
    return found == blocks_.end() ? std::nullopt : std::optional(found->body);
}

std::size_t FlacBlocks::size_with_headers() const {
    std::size_t size = 0;
    for (const Block& block : blocks_)
        size += header_size + block.body.size();
    return size;
}

// `size` with the headers: nothing, or enough for one. There is a second block only where one cannot be as
// large.
void FlacBlocks::append_padding(std::size_t size) {
    while (size > 0) {
        std::size_t body = size - header_size;
        if (body > largest_block)
            body = largest_block - header_size; // leaves enough for the header of the next
        blocks_.push_back({padding_type, std::string(body, '\0')});
        size -= header_size + body;
    }
}

void FlacBlocks::write_comment(const std::string& comment) {
    if (comment.size() > largest_block)
        throw vantaro_io::exception_io("The tags are larger than 16 MiB, which FLAC does not allow");
    const auto found = std::ranges::find(blocks_, comment_type, &Block::type);
    if (found != blocks_.end())
        found->body = comment;
    else
        blocks_.insert(blocks_.begin() + 1, {comment_type, comment});

    std::erase_if(blocks_, [](const Block& block) { return block.type == padding_type; });
    const std::size_t needed = size_with_headers();
    append_padding(padded_size(needed, size_, {.header = header_size}) - needed);

    std::string bytes;
    for (std::size_t i = 0; i < blocks_.size(); ++i) {
        const Block& block = blocks_[i];
        bytes += static_cast<char>(block.type | (i + 1 == blocks_.size() ? 0x80U : 0U));
        for (const unsigned shift : {16U, 8U, 0U})
            bytes += static_cast<char>(block.body.size() >> shift & 0xFF);
        bytes += block.body;
    }
    replace_bytes(stream_, start_, size_, bytes);
    size_ = bytes.size();
}

} // namespace vantaro::core::tags
