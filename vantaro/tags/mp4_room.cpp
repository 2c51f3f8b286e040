#include "vantaro/tags/mp4_room.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/mp4_data.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/raw_file.h"
#include "vantaro/tags/stream_bytes.h"

#include <mp4atom.h>
#include <mp4file.h>
#include <mp4tag.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = 8;
// A text item has the header of its own and that of the data.
constexpr std::size_t smallest_text_item = 24;
constexpr std::size_t largest_atom = 0xFFFFFFFF;
constexpr std::size_t largest_offset = 0xFFFFFFFF;
// TagLib pads a list that outgrows its place to a multiple of this, plus the header of the padding.
constexpr std::size_t taglib_unit = 1024;

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

// Nothing when the file has no item list.
std::optional<Mp4Room> find_room(TagLib::IOStream& stream) {
    RawFile file(stream);
    TagLib::MP4::Atoms atoms(&file);
    const TagLib::MP4::AtomList path = atoms.path("moov", "udta", "meta", "ilst");
    if (path.size() != 4)
        return std::nullopt;
    const TagLib::MP4::Atom* list = path[3];
    const std::optional<Place> meta = place_of(*path[2], stream_size(stream));
    const std::optional<Place> place = meta ? place_of(*list, meta->end) : std::nullopt;
    if (!place)
        throw vantaro_io::exception_io_data();
    const std::vector<const TagLib::MP4::Atom*> children(path[2]->children.begin(), path[2]->children.end());
    const auto middle = std::ranges::find(children, list);

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

// By how much the file may grow within "moov": TagLib does not notice when the place of audio behind it
// becomes too large for a table with 32 bits.
std::size_t most_growth(TagLib::IOStream& stream) {
    RawFile file(stream);
    TagLib::MP4::Atoms atoms(&file);
    TagLib::MP4::Atom* movie = atoms.find("moov");
    if (movie == nullptr)
        throw vantaro_io::exception_io_data();
    constexpr std::size_t head = 12; // header, version and flags; then come the count and the offsets
    std::size_t last = 0;
    for (const TagLib::MP4::Atom* atom : movie->findall("stco", true)) {
        const std::optional<Place> place = place_of(*atom, stream_size(stream));
        if (!place || place->end - place->start < head + 4)
            throw vantaro_io::exception_io_data();
        const TagLib::ByteVector table =
            to_byte_vector(read_bytes(stream, place->start + head, place->end - place->start - head));
        const unsigned count = std::min(table.toUInt(0U), table.size() / 4 - 1);
        for (unsigned i = 1; i <= count; ++i)
            if (const unsigned offset = table.toUInt(4 * i); offset > movie->offset)
                last = std::max<std::size_t>(last, offset);
    }
    return largest_offset - last;
}

// Makes TagLib give the item list this size, with one item that fills it.
void lay_out(TagLib::IOStream& stream, std::size_t list_size) {
    // In a file with overlapping atoms TagLib could take anything for a table of offsets, and its length for
    // that of the table.
    FixedStream fixed(stream);
    TagLib::MP4::File file(&fixed, false);
    if (!file.isValid() || file.tag() == nullptr)
        throw vantaro_io::exception_io_data();
    const TagLib::MP4::ItemMap items = file.tag()->itemMap();
    for (const auto& [name, item] : items)
        file.tag()->removeItem(name);
    if (list_size >= header_size + smallest_text_item)
        file.tag()->setItem("\251nam", TagLib::StringList(to_taglib(
                                           std::string(list_size - header_size - smallest_text_item, ' '))));
    if (!file.save())
        throw vantaro_io::exception_io();
}

// Makes the room longer by `size` bytes.
//
// The list and padding that TagLib lays out come to 8 bytes more than a multiple of 1024, whatever stood
// there before. So it is shown only as much of the room as makes the difference come out right; the rest is
// given a name that TagLib does not take for padding.
Mp4Room grow(TagLib::IOStream& stream, const Mp4Room& room, std::size_t size) {
    std::size_t shown = header_size + (taglib_unit - size % taglib_unit) % taglib_unit;
    if (shown > header_size && shown < 2 * header_size)
        shown += taglib_unit;
    if (shown + header_size <= room.size()) {
        std::string content;
        if (shown > header_size)
            content = make_atom("free", std::string(shown - 2 * header_size, '\0'));
        const std::string hidden = atom_header("skip", room.size() - shown);
        const std::string bytes = make_atom("ilst", content) + hidden;
        replace_bytes(stream, room.start, bytes.size(), bytes);
    } else {
        shown = room.size();
    }
    const std::size_t before = stream_size(stream);
    lay_out(stream, shown + size - header_size);
    const std::size_t grown = stream_size(stream) - before;
    const std::optional<Mp4Room> laid_out = find_room(stream);
    if (!laid_out || laid_out->start != room.start || laid_out->size() != shown + grown || grown < size)
        throw vantaro_io::exception_io("The item list could not be written");
    return {room.start, room.list_end + grown, room.end + grown};
}

} // namespace

Mp4Room make_mp4_room(TagLib::IOStream& stream, std::size_t needed) {
    const std::size_t before = stream_size(stream);
    std::optional<Mp4Room> room = find_room(stream);
    const std::size_t old_size = room ? room->size() : 0;
    const std::size_t most = most_growth(stream);
    std::size_t around = 0; // the new atoms that hold a new list
    if (!room) {
        lay_out(stream, header_size);
        room = find_room(stream);
        if (!room)
            throw vantaro_io::exception_io("The item list could not be written");
        around = stream_size(stream) - before - room->size();
    }
    std::size_t size = padded_size(around + needed, old_size, {.header = header_size}) - around;
    if (size + around > old_size + most)
        size = needed + header_size; // TagLib cannot lay out every size: the smallest has the best chances
    if (size > room->size())
        room = grow(stream, *room, size - room->size());
    if (stream_size(stream) - before > most)
        throw vantaro_io::exception_io("The file would become too large for its table of 32-bit offsets");
    return *room;
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
