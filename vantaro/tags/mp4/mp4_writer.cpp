#include "vantaro/tags/mp4/mp4_writer.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/mp4/mp4_offsets.h"
#include "vantaro/tags/padding.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

/// The item list with the "free" atoms directly beside it, or where a new list goes.
struct Room {
    std::size_t start;
    std::size_t list_end; ///< behind it is nothing but free space
    std::size_t end;
    std::vector<Mp4Atom> parents; ///< that grow with the room
    bool has_meta = true;
    bool has_udta = true;

    std::size_t size() const { return end - start; }
};

// `list` is its place in `parent`, from `start` to `end`.
Room room_around(const Mp4Atoms& atoms, const Mp4Atom& parent, std::size_t start, std::size_t end) {
    Room room{start, end, end, {}};
    const std::vector<const Mp4Atom*> siblings = atoms.children(parent);
    for (auto i = siblings.rbegin(); i != siblings.rend(); ++i)
        if ((*i)->name == "free" && (*i)->end == room.start && room.end - (*i)->start <= largest_atom)
            room.start = (*i)->start;
    for (const Mp4Atom* atom : siblings)
        if (atom->name == "free" && atom->start == room.end && atom->end - room.start <= largest_atom)
            room.end = atom->end;
    for (const Mp4Atom* above = &parent;; above = &atoms.all()[above->parent]) {
        room.parents.push_back(*above);
        if (above->parent == Mp4Atom::no_parent)
            return room;
    }
}

Room find_room(const Mp4Atoms& atoms) {
    const Mp4Atom* meta = atoms.find({"moov", "udta", "meta"});
    if (const Mp4Atom* list = atoms.find({"moov", "udta", "meta", "ilst"}))
        return room_around(atoms, atoms.all()[list->parent], list->start, list->end);
    if (meta != nullptr) {
        const Mp4Atom* handler = atoms.find({"hdlr"}, meta);
        // Version, flags and something else stand before the kind.
        if (handler != nullptr && handler->end - handler->content >= 12
            && atoms.file().bytes(handler->content + 8, 4) == "mdir")
            return room_around(atoms, *meta, handler->end, handler->end);
    }
    // In front of what the parent holds.
    const Mp4Atom* udta = atoms.find({"moov", "udta"});
    const Mp4Atom& parent = udta == nullptr ? *atoms.find({"moov"}) : *udta;
    Room room = room_around(atoms, parent, parent.content, parent.content);
    room.has_meta = false;
    room.has_udta = udta != nullptr;
    return room;
}

// The new atoms around a list, up to it; `size` is what the list and the padding have.
std::string head_of_list(const Room& room, std::size_t size) {
    if (room.has_meta)
        return {};
    const std::string handler = make_atom("hdlr", std::string(8, '\0') + "mdirappl" + std::string(9, '\0'));
    const std::size_t meta_size = atom_header_size + 4 + handler.size() + size;
    const std::string meta = atom_header("meta", meta_size) + std::string(4, '\0') + handler;
    return (room.has_udta ? std::string() : atom_header("udta", atom_header_size + meta_size)) + meta;
}

/// Where the size of an atom stands, and what it is.
struct SizeField {
    std::size_t place;
    std::size_t width;
    std::uint64_t value;
};

// Those of the parents, where they have one: it may also be "up to the end".
std::vector<SizeField> sizes_of_parents(const Room& room, FileBytes& file) {
    std::vector<SizeField> result;
    for (const Mp4Atom& parent : room.parents) {
        const std::uint64_t size = big_endian(file.bytes(parent.start, 4));
        if (size == 1)
            result.push_back({parent.start + atom_header_size, 8, parent.end - parent.start});
        else if (size != 0)
            result.push_back({parent.start, 4, size});
    }
    return result;
}

// Makes all sizes and positions right for a room that becomes as large as returned.
std::size_t grow(Mp4Atoms& atoms, const Room& room, std::size_t needed, Rewriting& rewriting) {
    const Mp4Offsets offsets(atoms, room.end);
    const std::vector<SizeField> sizes = sizes_of_parents(room, atoms.file());
    std::size_t most = std::min(offsets.most_growth(), largest_atom - room.size());
    for (const SizeField& size : sizes)
        if (size.width == 4)
            most = std::min<std::size_t>(most, largest_atom - size.value);
    const std::size_t size =
        padded_size(needed, room.size(), {.header = atom_header_size, .limit = room.size() + most});
    const std::size_t growth = size - room.size();
    if (growth > most)
        throw vantaro_io::exception_io("The file would become too large for its 32-bit offsets");
    offsets.move(rewriting, growth);
    for (const SizeField& field : sizes)
        rewriting.replace(field.place, field.width, big_endian_bytes(field.value + growth, field.width));
    return size;
}

} // namespace

FileEdit rewrite_mp4_list(Mp4Atoms& atoms, const std::vector<Part>& items) {
    Rewriting rewriting(atoms.file());
    const Room room = find_room(atoms);
    const std::size_t head_size = head_of_list(room, 0).size();
    std::size_t list_size = atom_header_size;
    for (const Part& item : items)
        list_size += item.size();
    const std::size_t needed = head_size + list_size;
    std::size_t size = padded_size(needed, room.size(), {.header = atom_header_size});
    if (size != room.size())
        size = grow(atoms, room, needed, rewriting);

    std::vector<Part> parts{Part(head_of_list(room, size - head_size) + atom_header("ilst", list_size))};
    parts.insert(parts.end(), items.begin(), items.end());
    if (size > needed) {
        parts.emplace_back(atom_header("free", size - needed));
        // Nothing of the old list stays behind; what was free is left as it is.
        const std::size_t place = room.start + needed + atom_header_size;
        const std::size_t blank_end = std::min(room.list_end + atom_header_size, room.end);
        const std::size_t old = std::max(place, blank_end);
        std::size_t written = needed + atom_header_size;
        if (place < old) {
            parts.emplace_back(std::string(old - place, '\0'));
            written += old - place;
        }
        if (old < room.end) {
            parts.emplace_back(atoms.file(), old, room.end - old);
            written += room.end - old;
        }
        parts.emplace_back(std::string(size - written, '\0'));
    }
    rewriting.replace(room.start, room.size(), parts);
    return rewriting.finish();
}

} // namespace vantaro::core::tags
