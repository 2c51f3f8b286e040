#include "vantaro/tags/mp4/mp4_offsets.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/mp4/mp4_data.h"
#include "vantaro/tags/stream_bytes.h"

#include <mp4atom.h>

#include <algorithm>
#include <string>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = 8;
constexpr std::uint64_t largest_narrow = 0xFFFFFFFF;

[[noreturn]] void refuse(const char* what) {
    throw vantaro_io::exception_io("The tags need more room than the file has for them, and its "
                                   + std::string(what) + " cannot be moved");
}

} // namespace

struct Mp4Offsets::Content {
    /// Of the atom at `start`, which has version and flags. Throws exception_io_data.
    Content(TagLib::IOStream& stream, std::size_t atom_start, std::size_t size)
        : start(atom_start + header_size), end(atom_start + size) {
        // None of these is so large that it needs the long form of a header.
        if (end > stream_size(stream) || big_endian(read_bytes(stream, atom_start, 4)) != size)
            throw vantaro_io::exception_io_data();
        const auto head = static_cast<unsigned>(take(stream, 4));
        version = head >> 24;
        flags = head & 0xFFFFFF;
    }

    /// A number from the front. Throws exception_io_data.
    std::uint64_t take(TagLib::IOStream& stream, std::size_t width) {
        if (end < start || end - start < width)
            throw vantaro_io::exception_io_data();
        start += width;
        return big_endian(read_bytes(stream, start - width, width));
    }
    std::size_t width() const { return version == 0 ? 4 : 8; }

    std::size_t start;
    std::size_t end;
    unsigned version = 0;
    unsigned flags = 0;
};

Mp4Offsets::Mp4Offsets(TagLib::IOStream& stream, const TagLib::MP4::Atoms& atoms, std::size_t insertion)
    : insertion_(insertion), most_growth_(largest_narrow) {
    for (const TagLib::MP4::Atom* top : atoms.atoms)
        find(stream, *top, {}, *top);
}

void Mp4Offsets::find(TagLib::IOStream& stream, const TagLib::MP4::Atom& atom, std::string_view parent,
                      const TagLib::MP4::Atom& top) {
    const auto start = static_cast<std::size_t>(atom.offset);
    const auto size = static_cast<std::size_t>(atom.length);
    const std::string name = to_bytes(atom.name);
    const auto content = [&] { return Content(stream, start, size); };
    if (name == "stco")
        add_chunks(stream, content(), 4);
    else if (name == "co64")
        add_chunks(stream, content(), 8);
    else if (name == "saio" && parent == "stbl") // in a fragment they count from its start
        add_auxiliary(stream, content());
    else if (name == "tfhd")
        add_fragment(stream, content(), static_cast<std::size_t>(top.offset));
    else if (name == "mfra")
        add_random_access(stream, start, size);
    else if (name == "sidx")
        check_segment_index(stream, content());
    else if (name == "iloc")
        check_items(stream, content());
    for (const TagLib::MP4::Atom* child : atom.children)
        find(stream, *child, name, top);
}

void Mp4Offsets::add_chunks(TagLib::IOStream& stream, Content content, std::size_t width) {
    const std::uint64_t count = content.take(stream, 4);
    add(stream, {content.start, count, width, width}, content.end);
}

// Where the keys to each chunk of encrypted audio stand.
void Mp4Offsets::add_auxiliary(TagLib::IOStream& stream, Content content) {
    if ((content.flags & 1) != 0)
        content.take(stream, 8); // type and parameter
    const std::uint64_t count = content.take(stream, 4);
    add(stream, {content.start, count, content.width(), content.width()}, content.end);
}

void Mp4Offsets::add_fragment(TagLib::IOStream& stream, Content content, std::size_t fragment_start) {
    content.take(stream, 4); // the track
    if ((content.flags & 1) == 0)
        return; // it counts from the start of the fragment
    const std::size_t place = content.start;
    // From a base in front of the insertion, audio is reached that moves as well as audio that stays.
    if (content.take(stream, 8) < insertion_ && fragment_start >= insertion_)
        refuse("fragments");
    add(stream, {place, 1, 8, 8}, content.end);
}

void Mp4Offsets::add_random_access(TagLib::IOStream& stream, std::size_t start, std::size_t size) {
    const std::size_t end = start + size;
    for (start += header_size; start + header_size <= end; start += size) {
        const std::string header = read_bytes(stream, start, header_size);
        size = big_endian(std::string_view(header).substr(0, 4));
        if (size < header_size || size > end - start)
            throw vantaro_io::exception_io_data();
        if (header.ends_with("tfra"))
            add_fragment_list(stream, {stream, start, size});
    }
}

void Mp4Offsets::add_fragment_list(TagLib::IOStream& stream, Content content) {
    content.take(stream, 4); // the track
    const std::uint64_t widths = content.take(stream, 4);
    const std::uint64_t count = content.take(stream, 4);
    // A time, the fragment's place, and three numbers within it, whose widths are given less 1.
    std::size_t entry_size = 2 * content.width() + 3;
    for (const unsigned shift : {4U, 2U, 0U})
        entry_size += widths >> shift & 3;
    add(stream, {content.start, count, entry_size, content.width(), content.width()}, content.end);
}

// What it lists is counted from its own end, and by sizes.
void Mp4Offsets::check_segment_index(TagLib::IOStream& stream, Content content) const {
    const std::size_t own_end = content.end;
    if (own_end > insertion_)
        return;
    content.take(stream, 8); // the track, units of time
    content.take(stream, content.width());
    std::uint64_t listed_end = own_end + content.take(stream, content.width());
    for (std::uint64_t count = content.take(stream, 4) & 0xFFFF; count > 0; --count) {
        listed_end += content.take(stream, 4) & 0x7FFFFFFF;
        content.take(stream, 8); // length and kind
    }
    if (listed_end > insertion_)
        refuse("index of segments");
}

// Pictures as files of this kind hold them.
void Mp4Offsets::check_items(TagLib::IOStream& stream, Content content) {
    content.take(stream, 2); // widths
    if (content.take(stream, content.version < 2 ? 2 : 4) > 0)
        refuse("items");
}

void Mp4Offsets::add(TagLib::IOStream& stream, const Table& table, std::size_t end) {
    if (table.count > (end - table.place) / table.entry_size)
        throw vantaro_io::exception_io_data();
    const std::string bytes = read_bytes(stream, table.place, table.count * table.entry_size);
    std::uint64_t last = 0;
    for (std::size_t i = 0; i < table.count; ++i)
        last = std::max(
            last, big_endian(std::string_view(bytes).substr(i * table.entry_size + table.skip, table.width)));
    if (last < insertion_)
        return;
    if (table.width == 4)
        most_growth_ = std::min<std::size_t>(most_growth_, largest_narrow - last);
    tables_.push_back(table);
}

void Mp4Offsets::move(TagLib::IOStream& stream, std::size_t growth) const {
    for (const Table& table : tables_) {
        const std::size_t place = table.place + (table.place >= insertion_ ? growth : 0);
        std::string bytes = read_bytes(stream, place, table.count * table.entry_size);
        for (std::size_t i = 0; i < table.count; ++i) {
            const std::size_t start = i * table.entry_size + table.skip;
            const std::uint64_t position = big_endian(std::string_view(bytes).substr(start, table.width));
            if (position >= insertion_)
                bytes.replace(start, table.width, big_endian_bytes(position + growth, table.width));
        }
        replace_bytes(stream, place, bytes.size(), bytes);
    }
}

} // namespace vantaro::core::tags
