#include "vantaro/tags/mp4/mp4_check.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/mp4/mp4_data.h"
#include "vantaro/tags/stream_bytes.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = 8;
constexpr std::size_t long_header_size = 16;
constexpr int deepest = 16;
constexpr std::array<std::string_view, 11> containers{"moov", "udta", "mdia", "meta", "ilst", "stbl",
                                                      "minf", "moof", "traf", "trak", "stsd"};

void check_table(TagLib::IOStream& stream, std::size_t start, std::size_t size, std::size_t entry_size) {
    constexpr std::size_t head = 16; // header, version and flags, count
    if (size < head || big_endian(read_bytes(stream, start + 12, 4)) > (size - head) / entry_size)
        throw vantaro_io::exception_io_data();
}

// Bit 0 of the flags says that an offset follows the track's number.
void check_fragment(TagLib::IOStream& stream, std::size_t start, std::size_t size) {
    constexpr std::size_t size_with_offset = 24;
    if (size < 12 || ((read_bytes(stream, start + 11, 1)[0] & 1) != 0 && size < size_with_offset))
        throw vantaro_io::exception_io_data();
}

void check_atoms(TagLib::IOStream& stream, std::size_t start, std::size_t end, int depth) {
    if (depth > deepest)
        throw vantaro_io::exception_io_data();
    while (start + header_size <= end) {
        const std::string header = read_some(stream, start, long_header_size);
        if (header.size() < header_size)
            return;
        const std::string name = header.substr(4, 4);
        std::uint64_t size = big_endian(std::string_view(header).substr(0, 4));
        std::size_t head = header_size;
        if (size == 1) {
            head = long_header_size;
            size = big_endian(std::string_view(header).substr(header_size));
        } else if (size == 0) {
            size = end - start;
        }
        if (size < head || size > end - start)
            return; // where TagLib stops
        if (name == "stco" || name == "co64")
            check_table(stream, start, size, name == "stco" ? 4 : 8);
        else if (name == "tfhd")
            check_fragment(stream, start, size);
        else if (std::ranges::find(containers, name) != containers.end()) {
            // These have fields of their own in front; QuickTime's "meta" has none.
            if (name == "stsd")
                head += 8;
            else if (name == "meta" && read_some(stream, start + head + 4, 4) != "hdlr")
                head += 4;
            check_atoms(stream, start + head, start + size, depth + 1);
        }
        start += size;
    }
}

} // namespace

void check_mp4(TagLib::IOStream& stream) {
    check_atoms(stream, 0, stream_size(stream), 0);
}

} // namespace vantaro::core::tags
