// Pages of Ogg, which carry packets of several streams (https://www.rfc-editor.org/rfc/rfc3533).
//
//     const OggPage page = read_ogg_page(file, start);
//     const OggPage next = read_ogg_page(file, page.end());
//
// All functions may be called from any thread, on different files at the same time.
#pragma once

#include "vantaro/tags/file_bytes.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core::tags {

constexpr std::string_view ogg_mark = "OggS";
constexpr std::size_t ogg_header_size = 27;
constexpr std::size_t full_lace = 255; ///< of a packet that goes on
constexpr std::size_t most_laces = 255;
constexpr std::uint64_t no_granule = ~std::uint64_t{0}; ///< no packet ends on the page

enum OggFlags : unsigned char { ogg_continued = 1, ogg_first = 2, ogg_last = 4 };

/// A page without its body.
struct OggPage {
    std::size_t start = 0;
    unsigned char flags = 0;
    std::uint64_t granule = 0; ///< how much audio there is up to the end of the page
    std::uint32_t serial = 0;  ///< of the stream
    std::uint32_t sequence = 0;
    std::string_view laces; ///< a byte for each 255 bytes of a packet and for what is left

    std::size_t body() const { return start + ogg_header_size + laces.size(); }
    std::size_t body_size() const;
    std::size_t end() const { return body() + body_size(); }
};

/// Throws exception_io_data when no whole page is there.
OggPage read_ogg_page(FileBytes& file, std::size_t start);

/// The first pages of the streams that begin together. What stands in front of the first is skipped. Throws
/// exception_io_data when there is none within 16 MiB.
std::vector<OggPage> first_ogg_pages(FileBytes& file, std::size_t start);

/// The granule position of the stream's last page that has one; of the file's last one where other streams
/// than `streams`, which begin together, have followed. Throws exception_io_data when there is none within
/// 64 MiB of the file's end.
std::uint64_t last_granule(FileBytes& file, std::span<const OggPage> streams, std::uint32_t serial);

/// The page as bytes, with its checksum. Everything but `laces` is taken from `page`.
std::string ogg_page_bytes(const OggPage& page, std::string_view laces, std::string_view body);

/// The checksum of a page whose sequence number has changed: wrong when it was wrong before.
std::uint32_t renumbered_checksum(std::uint32_t checksum, std::size_t page_size, std::uint32_t old_sequence,
                                  std::uint32_t new_sequence);

} // namespace vantaro::core::tags
