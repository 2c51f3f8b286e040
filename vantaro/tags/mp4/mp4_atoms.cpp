#include "vantaro/tags/mp4/mp4_atoms.h"

#include "host/api/exceptions.h"

#include <algorithm>
#include <array>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t long_header_size = 16;
constexpr std::size_t deepest = 16;
// Up to the end of "moov" a program writes some dozens; a day of audio has some 100,000 in fragments.
constexpr std::size_t most_in_front = 1 << 14;
constexpr std::size_t most_atoms = 1 << 20;
constexpr std::size_t window_size = 4096;
constexpr std::array<std::string_view, 11> containers{"moov", "udta", "meta", "ilst", "trak", "mdia",
                                                      "minf", "stbl", "moof", "traf", "mfra"};

/// How long the atom's header and the whole atom are; nothing when the size is impossible. `first` are its
/// first bytes, at most 16, of `room` up to the end of what holds it.
struct Sizes {
    std::size_t header;
    std::size_t whole;
};
std::optional<Sizes> sizes_of(std::string_view first, std::size_t room) {
    std::uint64_t size = big_endian(first.substr(0, 4));
    const std::size_t header = size == 1 ? long_header_size : atom_header_size;
    if (first.size() < header)
        return std::nullopt;
    if (size == 1)
        size = big_endian(first.substr(atom_header_size, 8));
    else if (size == 0)
        size = room;
    if (size < header || size > room)
        return std::nullopt;
    return Sizes{header, size};
}

} // namespace

Mp4Atoms::Mp4Atoms(FileBytes& file) : file_(file) {
    while (!is_moov_read_)
        if (!step(most_in_front))
            throw vantaro_io::exception_io_data("The MP4 file has no \"moov\" atom");
}

void Mp4Atoms::read_rest() {
    while (step(most_atoms))
        ;
}

// Reads one more atom; false when there is none.
bool Mp4Atoms::step(std::size_t most) {
    while (!open_.empty() && atoms_[open_.back()].end < place_ + atom_header_size) {
        place_ = atoms_[open_.back()].end;
        is_moov_read_ = is_moov_read_ || (open_.size() == 1 && atoms_[open_[0]].name == "moov");
        open_.pop_back();
        if (is_moov_read_ && open_.empty())
            return true;
    }
    const std::size_t end = open_.empty() ? file_.size() : atoms_[open_.back()].end;
    if (place_ + atom_header_size > end)
        return false;
    file_.check_abort();
    const std::string_view first = bytes(place_, std::min(long_header_size, end - place_));
    const std::optional<Sizes> sizes = sizes_of(first, end - place_);
    if (!sizes && is_moov_read_ && open_.empty())
        return false; // a download that has not been finished, or what another program has appended
    if (!sizes)
        throw vantaro_io::exception_io_data("The size of the atom at byte " + std::to_string(place_)
                                            + " is less than its header or more than what holds it");
    if (atoms_.size() == most)
        throw vantaro_io::exception_io_data("The MP4 file has too many atoms");
    Mp4Atom atom{std::string(first.substr(4, 4)), place_, place_ + sizes->header, place_ + sizes->whole,
                 open_.empty() ? Mp4Atom::no_parent : open_.back()};
    const bool in_list = atom.parent != Mp4Atom::no_parent && atoms_[atom.parent].name == "ilst";
    place_ = atom.end;
    if (!in_list && std::ranges::find(containers, atom.name) != containers.end()) {
        if (open_.size() == deepest)
            throw vantaro_io::exception_io_data("The atoms of the MP4 file are nested too deeply");
        if (atom.name == "meta") {
            // Version and flags are 0. QuickTime's has none: its first atom begins at once.
            const std::string_view look =
                bytes(atom.content, std::min<std::size_t>(12, atom.end - atom.content));
            if (big_endian(look.substr(0, 4)) == 0 || (look.size() == 12 && look.ends_with("hdlr")))
                atom.content = std::min(atom.content + 4, atom.end);
        }
        open_.push_back(atoms_.size());
        place_ = atom.content;
    }
    atoms_.push_back(std::move(atom));
    return true;
}

const Mp4Atom* Mp4Atoms::find(std::initializer_list<std::string_view> path, const Mp4Atom* above) const {
    const std::size_t top =
        above == nullptr ? Mp4Atom::no_parent : static_cast<std::size_t>(above - atoms_.data());
    const auto matches = [&](const Mp4Atom& atom) {
        const Mp4Atom* at = &atom;
        for (auto name = path.end(); name != path.begin();) {
            if (at->name != *--name)
                return false;
            if (name == path.begin())
                break;
            if (at->parent == Mp4Atom::no_parent)
                return false;
            at = &atoms_[at->parent];
        }
        return at->parent == top;
    };
    const auto found = std::ranges::find_if(atoms_, matches);
    return found == atoms_.end() ? nullptr : &*found;
}

std::vector<const Mp4Atom*> Mp4Atoms::children(const Mp4Atom& parent) const {
    std::vector<const Mp4Atom*> result;
    for (const Mp4Atom& atom : atoms_)
        if (atom.parent != Mp4Atom::no_parent && &atoms_[atom.parent] == &parent)
            result.push_back(&atom);
    return result;
}

// What the tags are in is kept; fragments are many, and far apart.
std::string_view Mp4Atoms::bytes(std::size_t start, std::size_t size) {
    if (!is_moov_read_ || size > window_size)
        return file_.bytes(start, size);
    if (start < window_start_ || start + size > window_start_ + window_.size()) {
        window_.resize(window_size);
        window_start_ = start;
        window_.resize(file_.copy(start, window_.data(), window_size));
        if (window_.size() < size)
            throw vantaro_io::exception_io_data("The MP4 file ends too early");
    }
    return std::string_view(window_).substr(start - window_start_, size);
}

std::optional<Mp4Child> take_atom(std::string_view& bytes) {
    if (bytes.size() < atom_header_size)
        return std::nullopt;
    const std::uint64_t size = big_endian(bytes.substr(0, 4));
    if (size < atom_header_size || size > bytes.size())
        return std::nullopt;
    const Mp4Child atom{bytes.substr(4, 4), bytes.substr(atom_header_size, size - atom_header_size)};
    bytes.remove_prefix(size);
    return atom;
}

std::string_view find_atom(std::string_view bytes, std::string_view name) {
    while (const std::optional<Mp4Child> atom = take_atom(bytes))
        if (atom->name == name)
            return atom->body;
    return {};
}

std::string make_atom(std::string_view name, std::string_view body) {
    return atom_header(name, body.size() + atom_header_size) + std::string(body);
}

std::string atom_header(std::string_view name, std::size_t size) {
    return big_endian_bytes(size, 4) + std::string(name);
}

} // namespace vantaro::core::tags
