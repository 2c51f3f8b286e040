#include "vantaro/tags/matroska/ebml.h"

#include "vantaro/tags/numbers.h"

#include <bit>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t widest_id = 4;
constexpr std::size_t widest_size = 8;

/// The width of a number is told by the zero bits that it begins with.
std::size_t width_of(char first) {
    return static_cast<std::size_t>(std::countl_zero(static_cast<unsigned char>(first))) + 1;
}

} // namespace

std::optional<EbmlHeader> ebml_header(std::string_view bytes) {
    if (bytes.empty() || width_of(bytes[0]) > widest_id || width_of(bytes[0]) >= bytes.size())
        return std::nullopt;
    EbmlHeader header;
    const std::size_t id_width = width_of(bytes[0]);
    header.id = static_cast<std::uint32_t>(big_endian(bytes.substr(0, id_width)));
    bytes.remove_prefix(id_width);
    header.size_width = width_of(bytes[0]);
    if (header.size_width > widest_size || header.size_width > bytes.size())
        return std::nullopt;
    header.header_size = id_width + header.size_width;
    const std::uint64_t all = (std::uint64_t{1} << (7 * header.size_width)) - 1;
    const std::uint64_t size = big_endian(bytes.substr(0, header.size_width)) & all;
    if (size != all)
        header.size = size;
    return header;
}

std::optional<EbmlElement> take_element(std::string_view& bytes) {
    const std::optional<EbmlHeader> header = ebml_header(bytes);
    if (!header || !header->size || *header->size > bytes.size() - header->header_size)
        return std::nullopt;
    const std::size_t whole = header->header_size + static_cast<std::size_t>(*header->size);
    const EbmlElement element{header->id, bytes.substr(0, whole),
                              bytes.substr(header->header_size, whole - header->header_size)};
    bytes.remove_prefix(whole);
    return element;
}

std::string_view find_child(std::string_view bytes, std::uint32_t id) {
    while (const std::optional<EbmlElement> child = take_element(bytes))
        if (child->id == id)
            return child->body;
    return {};
}

std::string ebml_size(std::uint64_t size, std::size_t width) {
    return big_endian_bytes(size | std::uint64_t{1} << (7 * width), width);
}

std::string ebml_id(std::uint32_t id) {
    return big_endian_bytes(id, (static_cast<std::size_t>(std::bit_width(id)) + 7) / 8);
}

std::string make_element(std::uint32_t id, std::string_view body, std::size_t size_width) {
    if (size_width == 0)
        for (size_width = 1; body.size() > largest_ebml_size(size_width);)
            ++size_width;
    std::string result = ebml_id(id) + ebml_size(body.size(), size_width);
    return result.append(body);
}

std::string make_void(std::size_t size) {
    if (size == 0)
        return {};
    const std::size_t width = size - least_void <= largest_ebml_size(1) ? 1 : widest_size;
    return make_element(void_id, std::string(size - 1 - width, '\0'), width);
}

double ebml_float(std::string_view body) {
    if (body.size() == 4)
        return std::bit_cast<float>(static_cast<std::uint32_t>(big_endian(body)));
    return body.size() == 8 ? std::bit_cast<double>(big_endian(body)) : 0;
}

} // namespace vantaro::core::tags
