// Files that are a list of chunks, each with a name of four letters and its size: what RIFF, AIFF, RF64,
// DSDIFF, DSF and CAF have in common.
//
//     const ChunkList chunks(file, wave_form, start);
//     if (const Chunk* format = chunks.find("fmt "))
//         chunks.bytes(*format);
//
// Chunks as programs write them are taken: odd ones without the byte that pads them, audio whose size a
// stream has left open or that is cut off. What is no chunk ends the list, and stays behind it.
//
// RIFF: https://www.mmsp.ece.mcgill.ca/Documents/AudioFormats/WAVE/Docs/riffmci.pdf
// AIFF: https://www.mmsp.ece.mcgill.ca/Documents/AudioFormats/AIFF/Docs/AIFF-1.3.pdf
//
// One thread at a time.
#pragma once

#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/riff/sizes64.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

/// How a format writes its chunks.
struct ChunkForm {
    /// What the file begins with, and, behind the size of the whole, what it then calls itself.
    std::array<std::string_view, 2> marks;
    std::array<std::string_view, 2> types = {};
    std::size_t header_size = 12; ///< in front of the first chunk
    bool is_big_endian = false;
    std::size_t size_width = 4;
    bool has_outer_size = true; ///< behind the mark, of what follows it
    bool size_counts_header = false;
    bool pads = true; ///< chunks begin at even places
    bool has_sizes64 = false;
    std::array<std::string_view, 2> audio = {}; ///< the chunks that may be open or cut off
    /// Audio of an open size is what the format allows, so that nothing is put behind it.
    bool open_audio_stays = false;
    std::size_t largest_file = std::numeric_limits<std::size_t>::max();
    std::string_view too_large = {}; ///< the reason when it would be larger

    std::size_t chunk_header_size() const { return 4 + size_width; }
    std::uint64_t number(std::string_view bytes) const {
        return is_big_endian ? big_endian(bytes) : little_endian(bytes);
    }
    std::string number_bytes(std::uint64_t value) const {
        return is_big_endian ? big_endian_bytes(value, size_width) : little_endian_bytes(value, size_width);
    }
    /// The size that says that it is not known, or stands elsewhere.
    std::uint64_t open_size() const { return size_width == 4 ? no_size32 : ~std::uint64_t{0}; }
    bool is_audio(std::string_view name) const { return name == audio[0] || name == audio[1]; }
};

struct Chunk {
    std::string name;
    std::size_t start = 0; ///< of its header
    std::size_t body = 0;
    std::size_t size = 0; ///< of the body
    std::size_t padding = 0;
    bool is_open = false;                         ///< its header does not say this size
    bool has_size64 = false;                      ///< Sizes64 says it
    std::optional<std::size_t> size64_entry = {}; ///< where in its table

    std::size_t end() const { return body + size + padding; }
    std::size_t total() const { return end() - start; }
};

class ChunkList {
public:
    /// The chunks from `start` on; file and form outlive this. Throws exception_io_data with the reason when
    /// the file does not begin as the form says or has no end of chunks.
    ChunkList(FileBytes& file, const ChunkForm& form, std::size_t start);

    const std::vector<Chunk>& chunks() const { return chunks_; }
    /// The first of the name, or null.
    const Chunk* find(std::string_view name) const;
    const Chunk* find_audio() const;
    /// Throws exception_io_data when it is larger than any tag.
    std::string_view bytes(const Chunk& chunk) const { return file_.bytes(chunk.body, chunk.size); }
    std::string_view head(const Chunk& chunk, std::size_t count) const;
    /// What names the file between its size and the first chunk, such as "WAVE".
    std::string_view type() const;

    /// The name of what stands behind the last chunk and claims to be longer than the file; empty when
    /// nothing does.
    const std::string& cut_off() const { return cut_off_; }

    FileBytes& file() const { return file_; }
    const ChunkForm& form() const { return form_; }
    std::size_t start() const { return start_; }
    /// Of the last chunk.
    std::size_t end() const { return end_; }
    /// Where the file says that it ends, at least end() and at most where it does.
    std::size_t outer_end() const;
    const std::optional<Sizes64>& sizes64() const { return sizes64_; }

private:
    struct Header {
        std::string name;
        std::uint64_t size;
        std::size_t body;
    };

    void check_beginning() const;
    /// What looks like a chunk's header.
    std::optional<Header> header_at(std::size_t place) const;
    std::optional<Chunk> chunk_at(std::size_t place);
    void find_size64(Chunk& chunk, std::uint64_t& size);
    bool is_left_open(const Header& header) const;
    std::uint64_t said_end() const;
    std::size_t padding_behind(std::size_t place) const;
    bool is_plausible(std::size_t place) const;

    FileBytes& file_;
    const ChunkForm& form_;
    const std::size_t start_;
    std::size_t end_;
    std::vector<Chunk> chunks_;
    std::string cut_off_;
    std::optional<Sizes64> sizes64_;
    std::vector<bool> is_taken_; ///< entries of its table
};

} // namespace vantaro::core::tags
