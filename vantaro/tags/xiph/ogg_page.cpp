#include "vantaro/tags/xiph/ogg_page.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/numbers.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t block_size = 64 << 10;
constexpr std::size_t largest_search = std::size_t{16} << 20;
constexpr std::size_t largest_backwards = std::size_t{64} << 20;
constexpr std::size_t most_streams = 256;
constexpr std::size_t version_at = 4;
constexpr std::size_t granule_at = 6;
constexpr std::size_t serial_at = 14;
constexpr std::size_t sequence_at = 18;
constexpr std::size_t checksum_at = 22;

constexpr auto checksum_table = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        std::uint32_t value = i << 24;
        for (int bit = 0; bit < 8; ++bit)
            value = value << 1 ^ ((value & 0x80000000) != 0 ? 0x04C11DB7 : 0);
        table[i] = value;
    }
    return table;
}();

std::uint32_t add_to_checksum(std::uint32_t checksum, unsigned char byte) {
    return checksum << 8 ^ checksum_table[checksum >> 24 ^ byte];
}

/// As FileBytes::copy, from memory where it is there.
std::string_view look(FileBytes& file, std::size_t start, std::size_t size, std::vector<char>& buffer) {
    size = std::min(size, file.size() - start);
    if (file.is_in_memory(start, size))
        return file.some(start, size);
    buffer.resize(size);
    return {buffer.data(), file.copy(start, buffer.data(), size)};
}

std::size_t find_first_mark(FileBytes& file, std::size_t start) {
    if (file.some(start, ogg_mark.size()) == ogg_mark)
        return start;
    std::vector<char> buffer;
    const std::size_t limit = start + std::min(largest_search, file.size() - std::min(start, file.size()));
    for (std::size_t place = start; place < limit; place += block_size) {
        const std::string_view block = look(file, place, block_size + ogg_mark.size() - 1, buffer);
        if (const std::size_t found = block.find(ogg_mark); found != block.npos)
            return place + found;
    }
    throw vantaro_io::exception_io_data("No page of Ogg is found at the beginning of the file");
}

} // namespace

std::size_t OggPage::body_size() const {
    return std::accumulate(laces.begin(), laces.end(), std::size_t{0},
                           [](std::size_t sum, char lace) { return sum + static_cast<unsigned char>(lace); });
}

OggPage read_ogg_page(FileBytes& file, std::size_t start) {
    const std::string_view header = file.some(start, ogg_header_size);
    if (header.empty())
        throw vantaro_io::exception_io_data("The file ends before its headers do");
    if (!header.starts_with(ogg_mark))
        throw vantaro_io::exception_io_data("Something else stands where a page of Ogg should begin");
    if (header.size() < ogg_header_size)
        throw vantaro_io::exception_io_data("A page of Ogg is longer than the file");
    if (header[version_at] != 0)
        throw vantaro_io::exception_io_data("The pages are of a version of Ogg that nobody knows");
    OggPage page;
    page.start = start;
    page.flags = static_cast<unsigned char>(header[version_at + 1]);
    page.granule = little_endian(header.substr(granule_at, 8));
    page.serial = static_cast<std::uint32_t>(little_endian(header.substr(serial_at, 4)));
    page.sequence = static_cast<std::uint32_t>(little_endian(header.substr(sequence_at, 4)));
    const auto count = static_cast<unsigned char>(header.back());
    page.laces = file.some(start + ogg_header_size, count);
    if (page.laces.size() < count || page.end() > file.size())
        throw vantaro_io::exception_io_data("A page of Ogg is longer than the file");
    return page;
}

std::vector<OggPage> first_ogg_pages(FileBytes& file, std::size_t start) {
    std::vector<OggPage> result;
    std::size_t place = find_first_mark(file, start);
    while (result.size() < most_streams) {
        const OggPage page = read_ogg_page(file, place);
        if ((page.flags & ogg_first) == 0)
            break;
        result.push_back(page);
        place = page.end();
        if (place == file.size())
            break;
    }
    return result;
}

std::uint64_t last_granule(FileBytes& file, std::span<const OggPage> streams, std::uint32_t serial) {
    std::vector<char> buffer;
    std::size_t end = file.size();
    const std::size_t limit =
        std::max(streams.front().start, file.size() - std::min(file.size(), largest_backwards));
    while (end > limit) {
        const std::size_t place = std::max(limit, end - std::min(end, block_size));
        const std::string_view block = look(file, place, end - place + ogg_header_size - 1, buffer);
        for (std::size_t at = end - place; at-- > 0;) {
            at = block.rfind(ogg_mark, at);
            if (at == block.npos)
                break;
            const std::string_view header = block.substr(at, ogg_header_size);
            if (header.size() < ogg_header_size || header[version_at] != 0)
                continue;
            const std::uint64_t granule = little_endian(header.substr(granule_at, 8));
            const std::uint64_t found = little_endian(header.substr(serial_at, 4));
            if (granule != no_granule
                && (found == serial || std::ranges::find(streams, found, &OggPage::serial) == streams.end()))
                return granule;
        }
        end = place;
    }
    throw vantaro_io::exception_io_data("No page of audio is found at the end of the file");
}

std::string ogg_page_bytes(const OggPage& page, std::string_view laces, std::string_view body) {
    std::string result(ogg_mark);
    result += '\0';
    result += static_cast<char>(page.flags);
    result += little_endian_bytes(page.granule, 8);
    result += little_endian_bytes(page.serial, 4);
    result += little_endian_bytes(page.sequence, 4);
    result += little_endian_bytes(0, 4);
    result += static_cast<char>(laces.size());
    result += laces;
    result += body;
    std::uint32_t checksum = 0;
    for (const char byte : result)
        checksum = add_to_checksum(checksum, static_cast<unsigned char>(byte));
    return result.replace(checksum_at, 4, little_endian_bytes(checksum, 4));
}

// The checksum of a sum (without carry) is the sum of the checksums.
std::uint32_t renumbered_checksum(std::uint32_t checksum, std::size_t page_size, std::uint32_t old_sequence,
                                  std::uint32_t new_sequence) {
    std::uint32_t difference = 0;
    for (const char byte : little_endian_bytes(old_sequence ^ new_sequence, 4))
        difference = add_to_checksum(difference, static_cast<unsigned char>(byte));
    for (std::size_t i = checksum_at; i < page_size; ++i)
        difference = add_to_checksum(difference, 0);
    return checksum ^ difference;
}

} // namespace vantaro::core::tags
