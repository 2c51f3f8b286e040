// The positions in an MP4 file, counted from its start, that its atoms name: those of the chunks of audio, of
// fragments, and of what indexes them. They have to move when bytes are inserted.
//
//     const Mp4Offsets offsets(atoms, place);
//     rewriting.replace(place, 0, bytes);
//     offsets.move(rewriting, bytes.size());
//
// One thread at a time on a file.
#pragma once

#include "vantaro/tags/mp4/mp4_atoms.h"

namespace vantaro::core::tags {

class Mp4Offsets {
public:
    /// Finds those that point to `insertion` or behind it; reads the rest of `atoms`, which outlive this.
    /// Throws exception_io_data for an atom that is damaged, and exception_io when the file has positions of
    /// a kind that cannot be moved.
    Mp4Offsets(Mp4Atoms& atoms, std::size_t insertion);

    /// How far the positions can move: some have only 32 bits.
    std::size_t most_growth() const { return most_growth_; }

    /// Adds `growth`, at most most_growth().
    void move(Rewriting& rewriting, std::size_t growth) const;

private:
    /// Positions, one in each entry.
    struct Table {
        std::size_t place; ///< of the first entry
        std::size_t count;
        std::size_t entry_size;
        std::size_t width;    ///< 4 or 8 bytes
        std::size_t skip = 0; ///< what stands before the position in an entry
    };

    /// What is left of an atom that has version and flags.
    struct Content;

    void find(const Mp4Atom& atom, std::string_view parent, std::size_t fragment_start);
    void add_fragment(Content content, std::size_t fragment_start);
    void add_fragment_list(Content content);
    void check_segment_index(Content content) const;
    void add(const Content& content, Table table);

    Mp4Atoms& atoms_;
    std::size_t insertion_;
    std::size_t most_growth_ = 0xFFFFFFFF;
    std::vector<Table> tables_;
};

} // namespace vantaro::core::tags
