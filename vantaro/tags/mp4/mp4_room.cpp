#include "vantaro/tags/mp4/mp4_room.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/mp4/mp4_data.h"
#include "vantaro/tags/mp4/mp4_offsets.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/raw_file.h"
#include "vantaro/tags/stream_bytes.h"

#include <mp4atom.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = 8;
constexpr std::size_t largest_atom = 0xFFFFFFFF;

struct Place {
    std::size_t start;
    std::size_t end;
    bool is_free;
};

// The atom's place within `limit`; nothing when it reaches beyond.
std::optional<Place> place_of(const TagLib::MP4::Atom& atom, std::size_t limit) {
    if (atom.offset < 0 || atom.length < static_cast<long>(header_size))
        return std::nullopt;
    const auto start = static_cast<std::size_t>(atom.offset);
    const auto length = static_cast<std::size_t>(atom.length);
    if (start > limit || length > limit - start)
        return std::nullopt;
    return Place{start, start + length, atom.name == "free"};
}

// The size that an atom's header says, where it does: it may also be "up to the end".
struct SizeField {
    std::size_t place;
    std::size_t width;
    std::uint64_t value;
};

std::optional<SizeField> size_of(TagLib::IOStream& stream, const TagLib::MP4::Atom& atom) {
    const auto start = static_cast<std::size_t>(atom.offset);
    const std::uint64_t size = big_endian(read_bytes(stream, start, 4));
    if (size == 0)
        return std::nullopt;
    if (size != 1)
        return SizeField{start, 4, size};
    return SizeField{start + header_size, 8, big_endian(read_bytes(stream, start + header_size, 8))};
}

// The item list of a file, or where a new one goes.
struct Layout {
    Mp4Room room;
    std::vector<const TagLib::MP4::Atom*> parents; ///< that grow with the room
    std::string head;                              ///< the new atoms around a new list, up to it
};

// The atom that holds a new list: `size` is what the list and the padding have.
std::string head_of_new_list(std::size_t size, bool with_container) {
    const std::string handler = make_atom("hdlr", std::string(8, '\0') + "mdirappl" + std::string(9, '\0'));
    const std::size_t meta_size = header_size + 4 + handler.size() + size;
    const std::string meta = atom_header("meta", meta_size) + std::string(4, '\0') + handler;
    return (with_container ? atom_header("udta", header_size + meta_size) : std::string()) + meta;
}

Mp4Room room_around(const TagLib::MP4::Atom& list, const TagLib::MP4::Atom& parent, std::size_t file_size) {
    const std::optional<Place> meta = place_of(parent, file_size);
    const std::optional<Place> place = meta ? place_of(list, meta->end) : std::nullopt;
    if (!place)
        throw vantaro_io::exception_io_data();
    const std::vector<const TagLib::MP4::Atom*> children(parent.children.begin(), parent.children.end());
    const auto middle = std::ranges::find(children, &list);

    Mp4Room room{place->start, place->end, place->end};
    for (auto i = middle; i != children.begin();) {
        const std::optional<Place> free = place_of(**--i, meta->end);
        if (!free || !free->is_free || free->end != room.start || room.end - free->start > largest_atom)
            break;
        room.start = free->start;
    }
    for (auto i = std::next(middle); i != children.end(); ++i) {
        const std::optional<Place> free = place_of(**i, meta->end);
        if (!free || !free->is_free || free->start != room.end || free->end - room.start > largest_atom)
            break;
        room.end = free->end;
    }
    return room;
}

Layout find_layout(TagLib::IOStream& stream, TagLib::MP4::Atoms& atoms) {
    const std::size_t file_size = stream_size(stream);
    const TagLib::MP4::AtomList list = atoms.path("moov", "udta", "meta", "ilst");
    if (list.size() == 4)
        return {room_around(*list[3], *list[2], file_size), {list[0], list[1], list[2]}, {}};
    // A new one stands in front of what its parent holds.
    TagLib::MP4::AtomList parents = atoms.path("moov", "udta");
    if (parents.size() != 2)
        parents = atoms.path("moov");
    if (parents.isEmpty())
        throw vantaro_io::exception_io_data();
    const std::optional<Place> parent = place_of(*parents.back(), file_size);
    if (!parent)
        throw vantaro_io::exception_io_data();
    const std::optional<SizeField> size = size_of(stream, *parents.back());
    const std::size_t start = parent->start + (size && size->width == 8 ? 2 : 1) * header_size;
    return {
        {start, start, start}, {parents.begin(), parents.end()}, head_of_new_list(0, parents.size() == 1)};
}

} // namespace

Mp4Room make_mp4_room(TagLib::IOStream& stream, std::size_t needed) {
    RawFile file(stream);
    TagLib::MP4::Atoms atoms(&file);
    Layout layout = find_layout(stream, atoms);
    Mp4Room& room = layout.room;
    const std::size_t around = layout.head.size();
    if (padded_size(around + needed, room.size(), {.header = header_size}) == room.size())
        return room;

    const Mp4Offsets offsets(stream, atoms, room.end);
    std::size_t most = std::min(offsets.most_growth(), largest_atom - room.size());
    std::vector<SizeField> sizes;
    for (const TagLib::MP4::Atom* parent : layout.parents)
        if (const std::optional<SizeField> size = size_of(stream, *parent)) {
            if (size->width == 4)
                most = std::min<std::size_t>(most, largest_atom - size->value);
            sizes.push_back(*size);
        }
    const PaddingForm form{.header = header_size, .limit = room.size() + most};
    const std::size_t size = padded_size(around + needed, room.size(), form);
    const std::size_t growth = size - room.size();
    if (growth > most)
        throw vantaro_io::exception_io("The file would become too large for its 32-bit offsets");

    if (around > 0)
        layout.head = head_of_new_list(size - around, layout.parents.size() == 1);
    replace_bytes(stream, room.end, 0, layout.head + std::string(growth - around, '\0'));
    offsets.move(stream, growth);
    for (const SizeField& field : sizes)
        replace_bytes(stream, field.place, field.width, big_endian_bytes(field.value + growth, field.width));
    return {room.start + around, room.list_end + around, room.end + growth};
}

void write_mp4_list(TagLib::IOStream& stream, const Mp4Room& room, std::string_view list) {
    std::string bytes(list);
    if (list.size() < room.size())
        bytes += atom_header("free", room.size() - list.size());
    // Nothing of the old list stays behind; what was free is left as it is.
    const std::size_t end = std::min(room.list_end + header_size, room.end);
    bytes.resize(std::max(bytes.size(), end - room.start));
    replace_bytes(stream, room.start, bytes.size(), bytes);
}

} // namespace vantaro::core::tags
