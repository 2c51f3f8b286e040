// What changes in a list of chunks, and the sizes that change with it.
//
//     ChunkWriter writer(chunks);
//     writer.put(chunks.find("ID3 "), "ID3 ", tag);
//     writer.write(rewriting);
//
// A chunk is replaced where it stands, a new one comes behind the last. Nothing else moves or is read, but
// for what stands behind a chunk that becomes larger.
//
// One thread at a time.
#pragma once

#include "vantaro/tags/riff/chunk_list.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

class ChunkWriter {
public:
    /// `chunks` outlives this.
    explicit ChunkWriter(const ChunkList& chunks) : chunks_(chunks), sizes64_(chunks.sizes64()) {}

    /// Gives a chunk, or where `old` is null a new one of that name, this body; takes it away when the body
    /// is empty. Each chunk at most once.
    void put(const Chunk* old, std::string_view name, std::string body);
    /// A new chunk directly behind one that is there.
    void add_behind(const Chunk& chunk, std::string_view name, std::string body);
    /// Hands all of it over. Once, as the last.
    void write(Rewriting& rewriting);

private:
    struct Change {
        std::size_t start;
        std::size_t size;
        std::string bytes;
    };

    std::string with_header(std::string_view name, const Chunk* old, std::string body);
    void close_last();
    void add_new();
    void set_outer_size();
    std::int64_t growth() const;

    const ChunkList& chunks_;
    std::optional<Sizes64> sizes64_;
    std::vector<Change> changes_;
    std::string added_;
};

/// With header and padding, of a body of `size` bytes; 0 when there is none.
std::size_t chunk_total(const ChunkForm& form, std::size_t size);

} // namespace vantaro::core::tags
