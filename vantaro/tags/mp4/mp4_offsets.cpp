#include "vantaro/tags/mp4/mp4_offsets.h"

#include "host/api/exceptions.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr std::uint64_t largest_narrow = 0xFFFFFFFF;

[[noreturn]] void refuse(const char* what) {
    throw vantaro_io::exception_io("The tags need more room than the file has for them, and its "
                                   + std::string(what) + " cannot be moved");
}

} // namespace

struct Mp4Offsets::Content {
    Content(Mp4Atoms& all, const Mp4Atom& atom) : atoms(all), start(atom.content), end(atom.end) {
        version = static_cast<unsigned>(take(1));
        flags = static_cast<unsigned>(take(3));
    }

    /// A number from the front. Throws exception_io_data.
    std::uint64_t take(std::size_t width) {
        if (end - start < width)
            throw vantaro_io::exception_io_data("The atom that ends at byte " + std::to_string(end)
                                                + " is too short");
        start += width;
        return big_endian(atoms.bytes(start - width, width));
    }
    std::size_t width() const { return version == 0 ? 4 : 8; }

    Mp4Atoms& atoms;
    std::size_t start;
    std::size_t end;
    unsigned version = 0;
    unsigned flags = 0;
};

Mp4Offsets::Mp4Offsets(Mp4Atoms& atoms, std::size_t insertion) : atoms_(atoms), insertion_(insertion) {
    atoms.read_rest();
    std::size_t top_start = 0;
    for (const Mp4Atom& atom : atoms.all()) {
        if (atom.parent == Mp4Atom::no_parent)
            top_start = atom.start;
        find(atom, atom.parent == Mp4Atom::no_parent ? std::string_view() : atoms.all()[atom.parent].name,
             top_start);
    }
}

void Mp4Offsets::find(const Mp4Atom& atom, std::string_view parent, std::size_t top_start) {
    const auto content = [&] { return Content(atoms_, atom); };
    if (atom.name == "stco" || atom.name == "co64") {
        Content table = content();
        const std::size_t width = atom.name == "stco" ? 4 : 8;
        const std::size_t count = table.take(4);
        add(table, {table.start, count, width, width});
    } else if (atom.name == "saio" && parent == "stbl") { // in a fragment they count from its start
        // Where the keys to each chunk of encrypted audio stand.
        Content table = content();
        if ((table.flags & 1) != 0)
            table.take(8); // type and parameter
        const std::size_t count = table.take(4);
        add(table, {table.start, count, table.width(), table.width()});
    } else if (atom.name == "tfhd") {
        add_fragment(content(), top_start);
    } else if (atom.name == "tfra") {
        add_fragment_list(content());
    } else if (atom.name == "sidx") {
        check_segment_index(content());
    } else if (atom.name == "iloc") { // pictures as files of this kind hold them
        Content items = content();
        items.take(2); // widths
        if (items.take(items.version < 2 ? 2 : 4) > 0)
            refuse("items");
    }
}

void Mp4Offsets::add_fragment(Content content, std::size_t fragment_start) {
    content.take(4); // the track
    if ((content.flags & 1) == 0)
        return; // it counts from the start of the fragment
    const Table table{content.start, 1, 8, 8};
    // From a base in front of the insertion, audio is reached that moves as well as audio that stays.
    if (Content(content).take(8) < insertion_ && fragment_start >= insertion_)
        refuse("fragments");
    add(content, table);
}

void Mp4Offsets::add_fragment_list(Content content) {
    content.take(4); // the track
    const std::uint64_t widths = content.take(4);
    const std::uint64_t count = content.take(4);
    // A time, the fragment's place, and three numbers within it, whose widths are given less 1.
    std::size_t entry_size = 2 * content.width() + 3;
    for (const unsigned shift : {4U, 2U, 0U})
        entry_size += widths >> shift & 3;
    add(content, {content.start, count, entry_size, content.width(), content.width()});
}

// What it lists is counted from its own end, and by sizes.
void Mp4Offsets::check_segment_index(Content content) const {
    const std::size_t own_end = content.end;
    if (own_end > insertion_)
        return;
    content.take(8); // the track, units of time
    content.take(content.width());
    std::uint64_t listed_end = own_end + content.take(content.width());
    for (std::uint64_t count = content.take(4) & 0xFFFF; count > 0; --count) {
        listed_end += content.take(4) & 0x7FFFFFFF;
        content.take(8); // length and kind
    }
    if (listed_end > insertion_)
        refuse("index of segments");
}

void Mp4Offsets::add(const Content& content, Table table) {
    if (table.count > (content.end - table.place) / table.entry_size)
        throw vantaro_io::exception_io_data("The table of positions at byte " + std::to_string(table.place)
                                            + " names more entries than it has");
    const std::string_view bytes = atoms_.bytes(table.place, table.count * table.entry_size);
    std::uint64_t last = 0;
    for (std::size_t i = 0; i < table.count; ++i)
        last = std::max(last, big_endian(bytes.substr(i * table.entry_size + table.skip, table.width)));
    if (last < insertion_)
        return;
    most_growth_ = std::min<std::size_t>(most_growth_, (table.width == 4 ? largest_narrow : ~0ULL) - last);
    tables_.push_back(table);
}

void Mp4Offsets::move(Rewriting& rewriting, std::size_t growth) const {
    for (const Table& table : tables_) {
        std::string bytes(atoms_.bytes(table.place, table.count * table.entry_size));
        for (std::size_t i = 0; i < table.count; ++i) {
            const std::size_t start = i * table.entry_size + table.skip;
            const std::uint64_t position = big_endian(std::string_view(bytes).substr(start, table.width));
            if (position >= insertion_)
                bytes.replace(start, table.width, big_endian_bytes(position + growth, table.width));
        }
        rewriting.replace(table.place, table.count * table.entry_size, std::move(bytes));
    }
}

} // namespace vantaro::core::tags
