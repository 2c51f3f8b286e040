// The elements of EBML, of which Matroska files are made (RFC 8794).
//
//     while (const std::optional<EbmlElement> child = take_element(body))
//         if (child->id == title_id) ...
//
// All functions may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantaro::core::tags {

/// Of the identifier and the size.
constexpr std::size_t largest_ebml_header = 12;
/// A Void element has at least this size.
constexpr std::size_t least_void = 2;
constexpr std::uint32_t void_id = 0xEC;
constexpr std::uint32_t checksum_id = 0xBF;

struct EbmlHeader {
    std::uint32_t id = 0;
    std::size_t header_size = 0;
    std::size_t size_width = 0; ///< of the field that holds the size
    std::optional<std::uint64_t>
        size; ///< of the content; nothing: it ends where something begins that is no part of it
};

/// The header at the beginning of `bytes`; nothing when there is none.
std::optional<EbmlHeader> ebml_header(std::string_view bytes);

struct EbmlElement {
    std::uint32_t id = 0;
    std::string_view whole;
    std::string_view body;
};

/// Takes the first element off. Nothing, and nothing is taken, when there is none that ends in `bytes`.
std::optional<EbmlElement> take_element(std::string_view& bytes);

/// The body of the first child of that kind; empty when there is none.
std::string_view find_child(std::string_view bytes, std::uint32_t id);

/// The largest number that a size field of this width can hold.
constexpr std::uint64_t largest_ebml_size(std::size_t width) {
    return (std::uint64_t{1} << (7 * width)) - 2;
}
/// Requires: it fits.
std::string ebml_size(std::uint64_t size, std::size_t width);
/// With the shortest size field, or one of `size_width`.
std::string make_element(std::uint32_t id, std::string_view body, std::size_t size_width = 0);
/// An identifier as it stands in the file.
std::string ebml_id(std::uint32_t id);
/// A Void element of `size` bytes in all, or nothing of none. Requires: not 1.
std::string make_void(std::size_t size);

/// A floating-point number of 4 or 8 bytes; 0 when it is none.
double ebml_float(std::string_view body);

} // namespace vantaro::core::tags
