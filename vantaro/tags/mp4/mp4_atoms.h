// The atoms of an MP4 file, after ISO/IEC 14496-12
// (https://standards.iso.org/ittf/PubliclyAvailableStandards/) and the older
// https://developer.apple.com/documentation/quicktime-file-format.
//
//     Mp4Atoms atoms(file);
//     const Mp4Atom* list = atoms.find({"moov", "udta", "meta", "ilst"});
//
// One thread at a time.
#pragma once

#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/numbers.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

inline constexpr std::size_t atom_header_size = 8;
inline constexpr std::size_t largest_atom = 0xFFFFFFFF; ///< with such a header

/// An atom's place in the file, and that of its content: behind version and flags where it holds others.
struct Mp4Atom {
    static constexpr std::size_t no_parent = static_cast<std::size_t>(-1);

    std::string name; ///< four bytes
    std::size_t start = 0;
    std::size_t content = 0;
    std::size_t end = 0;
    std::size_t parent = no_parent; ///< its index
};

class Mp4Atoms {
public:
    /// Reads those up to the end of "moov". `file` outlives this. Throws exception_io_data when there is no
    /// "moov", or when atoms have impossible sizes, are nested too deeply or are too many.
    explicit Mp4Atoms(FileBytes& file);

    /// Reads those behind "moov" too. What is no atom there ends them.
    void read_rest();

    /// Each before those that it holds, otherwise as they stand in the file.
    const std::vector<Mp4Atom>& all() const { return atoms_; }
    /// The first with these names from the top, or from `above` on; null when there is none.
    const Mp4Atom* find(std::initializer_list<std::string_view> path, const Mp4Atom* above = nullptr) const;
    std::vector<const Mp4Atom*> children(const Mp4Atom& parent) const;

    /// Bytes behind "moov" or of a table, valid until the next call. Throws what FileBytes::bytes throws.
    std::string_view bytes(std::size_t start, std::size_t size);
    FileBytes& file() const { return file_; }

private:
    bool step(std::size_t most);

    FileBytes& file_;
    std::vector<Mp4Atom> atoms_;
    std::vector<std::size_t> open_; ///< those that the current place is in
    std::size_t place_ = 0;
    bool is_moov_read_ = false;
    std::string window_; ///< the bytes read last behind "moov"
    std::size_t window_start_ = 0;
};

/// An atom that is in memory.
struct Mp4Child {
    std::string_view name;
    std::string_view body;
};
/// Takes the next atom from the front of `bytes`; nothing when there is none of a valid size.
std::optional<Mp4Child> take_atom(std::string_view& bytes);
/// The body of the first atom of that name, empty when there is none.
std::string_view find_atom(std::string_view bytes, std::string_view name);
std::string make_atom(std::string_view name, std::string_view body);
/// `size` is that of the whole atom, at most largest_atom.
std::string atom_header(std::string_view name, std::size_t size);

} // namespace vantaro::core::tags
