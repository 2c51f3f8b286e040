// FLAC: a list of metadata blocks. All but the comment and the padding keep their bytes: seek table, cue
// sheet, pictures, application data.
#include "host/api/exceptions.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/outer_tags.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/tag_kinds.h"
#include "vantaro/tags/xiph/flac_stream_info.h"
#include "vantaro/tags/xiph/xiph_fields.h"

#include <algorithm>
#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr unsigned info_type = 0;
constexpr unsigned padding_type = 1;
constexpr unsigned comment_type = 4;
constexpr std::string_view mark = "fLaC";
constexpr std::size_t header_size = 4;
constexpr std::size_t largest_block = 0xFFFFFF;

struct Block {
    unsigned type;
    Part body;
};

/// Block headers and bodies. `size` with the headers: nothing, or enough for one. There is a second block
/// only where one cannot be as large.
void append_padding(std::vector<Block>& blocks, std::size_t size) {
    while (size > 0) {
        std::size_t body = size - header_size;
        if (body > largest_block)
            body = largest_block - header_size; // leaves enough for the header of the next
        blocks.push_back({padding_type, Part(std::string(body, '\0'))});
        size -= header_size + body;
    }
}

std::size_t size_with_headers(const std::vector<Block>& blocks) {
    std::size_t size = 0;
    for (const Block& block : blocks)
        size += header_size + block.body.size();
    return size;
}

std::vector<Part> render(const std::vector<Block>& blocks) {
    std::vector<Part> parts;
    for (const Block& block : blocks) {
        std::string header(1, static_cast<char>(block.type | (&block == &blocks.back() ? 0x80U : 0U)));
        parts.emplace_back(header + big_endian_bytes(block.body.size(), 3));
        parts.push_back(block.body);
    }
    return parts;
}

class FlacFile final : public AudioFile {
public:
    FlacFile(FileBytes& file, const Format& format, std::size_t start)
        : AudioFile(format), file_(file), outer_(file, start), start_(start + mark.size()) {
        if (file.bytes(start, mark.size()) != mark)
            throw vantaro_io::exception_io_data("The file is called FLAC, but does not begin with \"fLaC\"");
        read_blocks();
        const auto comment = std::ranges::find(blocks_, comment_type, &Block::type);
        if (comment != blocks_.end())
            xiph_.emplace(comment->body.bytes());
    }

    std::vector<TagStore*> tags() override {
        std::vector<TagStore*> result = outer_.tags(format().customary_tag);
        if (xiph_)
            result.insert(result.begin(), &*xiph_);
        return result;
    }
    TagStore* add_customary_tag() override { return xiph_ ? nullptr : &xiph_.emplace(); }

    FileEdit edit() override {
        Rewriting rewriting(file_);
        outer_.write(rewriting);
        if (xiph_)
            write_comment(rewriting);
        return rewriting.finish();
    }

    AudioProperties audio() override {
        return describe_flac(blocks_.front().body.bytes(), outer_.audio().end - start_ - size_);
    }
    std::string tool() const override { return xiph_ ? clean_text(xiph_->vendor()) : std::string(); }

private:
    void read_blocks() {
        const std::size_t end = outer_.audio().end;
        for (bool last = false; !last;) {
            const std::string_view header = file_.bytes(start_ + size_, header_size);
            const auto type_and_last = static_cast<unsigned char>(header[0]);
            last = (type_and_last & 0x80) != 0;
            const unsigned type = type_and_last & 0x7F;
            const std::size_t size = big_endian(header.substr(1));
            const std::size_t body = start_ + size_ + header_size;
            // The first block and no other: a file with a hole would have billions of empty ones.
            if ((type == info_type) != blocks_.empty() || body > end || size > end - body)
                throw vantaro_io::exception_io_data("The metadata blocks of the FLAC file are damaged");
            blocks_.push_back({type, Part(file_, body, size)});
            size_ += header_size + size;
        }
        file_.note_tag(start_, size_);
    }

    /// Replaces the first comment block, or adds one behind the stream information, with padding behind all
    /// blocks (see padding.h).
    void write_comment(Rewriting& rewriting) {
        std::string comment = xiph_->render();
        if (comment.size() > largest_block)
            throw vantaro_io::exception_io("The tags are larger than 16 MiB, which FLAC does not allow");
        std::vector<Block> blocks = blocks_;
        const auto found = std::ranges::find(blocks, comment_type, &Block::type);
        if (found != blocks.end())
            found->body = Part(std::move(comment));
        else
            blocks.insert(blocks.begin() + 1, {comment_type, Part(std::move(comment))});
        std::erase_if(blocks, [](const Block& block) { return block.type == padding_type; });
        const std::size_t needed = size_with_headers(blocks);
        append_padding(blocks, padded_size(needed, size_, {.header = header_size}) - needed);
        rewriting.replace(start_, size_, render(blocks));
    }

    FileBytes& file_;
    OuterTags outer_;
    std::size_t start_;    ///< of the blocks
    std::size_t size_ = 0; ///< of all blocks in the file
    std::vector<Block> blocks_;
    std::optional<XiphFields> xiph_;
};

} // namespace

std::unique_ptr<AudioFile> open_flac_file(FileBytes& file, const Format& format, std::size_t start) {
    return std::make_unique<FlacFile>(file, format, start);
}

} // namespace vantaro::core::tags
