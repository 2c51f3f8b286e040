// The positions in an MP4 file, counted from its start, that its atoms name: those of the chunks of audio, of
// fragments, and of what indexes them. They have to move when bytes are inserted.
//
//     const Mp4Offsets offsets(stream, atoms, place);
//     stream.insert(bytes, place, 0);
//     offsets.move(stream, bytes.size());
//
// One thread at a time on a stream.
#pragma once

#include <tiostream.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace TagLib::MP4 {
class Atom;
class Atoms;
} // namespace TagLib::MP4

namespace vantaro::core::tags {

class Mp4Offsets {
public:
    /// Finds those that point to `insertion` or behind it; `atoms` are those of the stream. Throws
    /// exception_io_data for an atom that is damaged, and exception_io when the file has positions of a kind
    /// that cannot be moved.
    Mp4Offsets(TagLib::IOStream& stream, const TagLib::MP4::Atoms& atoms, std::size_t insertion);

    /// How far the positions can move: some have only 32 bits.
    std::size_t most_growth() const { return most_growth_; }

    /// Adds `growth`, at most most_growth(), after so many bytes have been inserted.
    void move(TagLib::IOStream& stream, std::size_t growth) const;

private:
    /// Positions, one in each entry.
    struct Table {
        std::size_t place; ///< of the first entry, before the insertion
        std::size_t count;
        std::size_t entry_size;
        std::size_t width;    ///< 4 or 8 bytes
        std::size_t skip = 0; ///< what stands before the position in an entry
    };

    /// An atom, or what is left of one.
    struct Content;

    void find(TagLib::IOStream& stream, const TagLib::MP4::Atom& atom, std::string_view parent,
              const TagLib::MP4::Atom& top);
    void add_chunks(TagLib::IOStream& stream, Content content, std::size_t width);
    void add_auxiliary(TagLib::IOStream& stream, Content content);
    void add_fragment(TagLib::IOStream& stream, Content content, std::size_t fragment_start);
    void add_random_access(TagLib::IOStream& stream, std::size_t start, std::size_t size);
    void add_fragment_list(TagLib::IOStream& stream, Content content);
    void check_segment_index(TagLib::IOStream& stream, Content content) const;
    static void check_items(TagLib::IOStream& stream, Content content);
    void add(TagLib::IOStream& stream, const Table& table, std::size_t end);

    std::size_t insertion_;
    std::size_t most_growth_;
    std::vector<Table> tables_;
};

} // namespace vantaro::core::tags
