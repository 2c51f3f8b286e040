#include "vantaro/tags/xiph/ogg_stream.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/numbers.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

// More than headers take in any file, so that nobody reads all of one.
constexpr std::size_t largest_packets = std::size_t{1} << 28;
constexpr std::size_t largest_overhead = std::size_t{4} << 20; ///< of the pages
constexpr std::size_t largest_foreign = std::size_t{16} << 20; ///< pages of other streams
constexpr std::size_t most_packets = 1 << 16;

/// The file from a place on, read in blocks that are not kept.
class Window {
public:
    Window(FileBytes& file) : file_(file) {} // NOLINT: only here

    std::string_view look(std::size_t start, std::size_t size) {
        size = std::min(size, file_.size() - std::min(start, file_.size()));
        if (start < start_ || start + size > start_ + block_.size()) {
            start_ = start;
            block_.resize(std::max(size, std::min(block_size, file_.size() - start)));
            block_.resize(file_.copy(start, block_.data(), block_.size()));
        }
        return std::string_view(block_).substr(start - start_, size);
    }

private:
    static constexpr std::size_t block_size = 1 << 20;

    FileBytes& file_;
    std::size_t start_ = 0;
    std::string block_;
};

} // namespace

OggStream::OggStream(FileBytes& file, const OggPage& first_page)
    : file_(file), serial_(first_page.serial), next_(first_page.start) {}

void OggStream::read_page() {
    const OggPage page = read_ogg_page(file_, next_);
    next_ = page.end();
    overhead_ += page.body() - page.start;
    const bool is_ours = page.serial == serial_;
    (is_ours ? read_ : foreign_) += page.body_size();
    if (overhead_ > largest_overhead || foreign_ > largest_foreign || read_ > largest_packets)
        throw vantaro_io::exception_io_data("The headers of the audio do not end");
    if (!is_ours)
        return;
    if ((page.flags & ogg_first) != 0 && !pages_.empty())
        throw vantaro_io::exception_io_data("The audio ends before its headers do");
    // An empty page in the midst of a packet may lack the flag.
    if (!page.laces.empty() && ((page.flags & ogg_continued) != 0) != is_open_)
        throw vantaro_io::exception_io_data("A packet of the headers has no beginning or no end");
    pages_.push_back(page);
    std::size_t place = page.body();
    bool goes_on_from_before = is_open_;
    for (const char lace : page.laces) {
        const std::size_t size = static_cast<unsigned char>(lace);
        if (!is_open_)
            packets_.push_back({pages_.size() - 1, 0, 0, {}});
        Packet& packet = packets_.back();
        if (packet.pieces.empty() || goes_on_from_before)
            packet.pieces.push_back({place, 0});
        goes_on_from_before = false;
        packet.pieces.back().size += size;
        packet.size += size;
        packet.last_page = pages_.size() - 1;
        place += size;
        is_open_ = size == full_lace;
    }
    if (packets_.size() > most_packets)
        throw vantaro_io::exception_io_data("The headers of the audio do not end");
}

const OggStream::Packet& OggStream::packet(std::size_t index) {
    while (packets_.size() < index + 1 + (is_open_ ? 1 : 0))
        read_page();
    return packets_[index];
}

std::size_t OggStream::packet_size(std::size_t index) {
    return packet(index).size;
}

std::string OggStream::packet_bytes(std::size_t index) {
    return bytes_of(packet(index));
}

std::string OggStream::bytes_of(const Packet& packet) {
    std::string result;
    result.reserve(packet.size);
    for (const Extent& piece : packet.pieces)
        result += file_.bytes(piece.offset, piece.size);
    return result;
}

// Where a packet ends together with its page.
std::size_t OggStream::last_shared_page(std::size_t page) {
    const auto goes_on = [&] {
        const std::string_view laces = pages_[page].laces;
        return laces.empty() ? packets_.back().last_page < page && is_open_
                             : static_cast<unsigned char>(laces.back()) == full_lace;
    };
    while (goes_on()) {
        if (page + 1 == pages_.size())
            read_page();
        if (page + 1 < pages_.size())
            ++page;
    }
    return page;
}

void OggStream::replace(Rewriting& rewriting, std::size_t index, const std::string& bytes,
                        std::size_t headers) {
    packet(std::max(index, headers - 1));
    std::size_t first = packets_[index].first_page;
    while ((pages_[first].flags & ogg_continued) != 0)
        --first;
    const std::size_t last = last_shared_page(packets_[index].last_page);

    // Headers, and audio where a program has put it on their last page.
    std::vector<Group> groups(1);
    for (std::size_t i = 0; i < packets_.size(); ++i) {
        if (packets_[i].first_page < first || packets_[i].first_page > last)
            continue;
        if (i == headers && !groups.back().laces.empty())
            groups.emplace_back();
        const std::string content = i == index ? bytes : bytes_of(packets_[i]);
        groups.back().laces += std::string(content.size() / full_lace, static_cast<char>(full_lace));
        groups.back().laces += static_cast<char>(content.size() % full_lace);
        groups.back().body += content;
    }

    const std::size_t old_count = last - first + 1;
    std::vector<std::string> pages;
    bool goes_on = false;
    for (std::size_t group = 0; group < groups.size(); ++group) {
        std::string_view laces = groups[group].laces;
        std::string_view body = groups[group].body;
        const bool is_end = group + 1 == groups.size();
        while (!laces.empty()) {
            // Every page that there was has at least one value, so that no later one changes its number.
            const std::size_t left = old_count - std::min(old_count, pages.size() + 1);
            const std::size_t spared = is_end ? std::min(left, laces.size() - 1) : 0;
            OggPage page = pages_[first];
            page.laces = laces.substr(0, std::min(most_laces, laces.size() - spared));
            laces.remove_prefix(page.laces.size());
            const bool is_last = is_end && laces.empty();
            page.flags = static_cast<unsigned char>((goes_on ? ogg_continued : 0)
                                                    | (pages.empty() ? pages_[first].flags & ogg_first : 0)
                                                    | (is_last ? pages_[last].flags & ogg_last : 0));
            goes_on = static_cast<unsigned char>(page.laces.back()) == full_lace;
            const bool has_end =
                page.laces.find_first_not_of(static_cast<char>(full_lace)) != std::string_view::npos;
            page.granule = !has_end ? no_granule : is_last ? pages_[last].granule : 0;
            page.sequence += static_cast<std::uint32_t>(pages.size());
            const std::size_t size = page.body_size();
            pages.push_back(ogg_page_bytes(page, page.laces, body.substr(0, size)));
            body.remove_prefix(size);
        }
    }

    for (std::size_t i = 0; i < old_count; ++i) {
        std::string in_place = i < pages.size() ? std::move(pages[i]) : std::string();
        for (std::size_t more = old_count; i + 1 == old_count && more < pages.size(); ++more)
            in_place += pages[more];
        const OggPage& old = pages_[first + i];
        rewriting.replace(old.start, old.end() - old.start, std::move(in_place));
    }
    if (pages.size() != old_count)
        renumber(rewriting, pages_[last].end(), static_cast<std::uint32_t>(pages.size() - old_count));
}

// Damaged parts between the pages are skipped.
void OggStream::renumber(Rewriting& rewriting, std::size_t start, std::uint32_t by) {
    constexpr std::size_t sequence_at = 18;
    Window window(file_);
    while (start < file_.size()) {
        const std::string_view header = window.look(start, ogg_header_size + most_laces);
        if (header.size() < ogg_header_size)
            return;
        if (!header.starts_with(ogg_mark)) {
            const std::string_view block = window.look(start, std::size_t{64} << 10);
            const std::size_t found = block.find(ogg_mark, 1);
            start += found != block.npos ? found : block.size() - std::min(block.size(), ogg_mark.size()) + 1;
            continue;
        }
        OggPage page;
        page.flags = static_cast<unsigned char>(header[5]);
        page.serial = static_cast<std::uint32_t>(little_endian(header.substr(14, 4)));
        page.laces = header.substr(ogg_header_size, static_cast<unsigned char>(header[ogg_header_size - 1]));
        if (page.serial == serial_ && (page.flags & ogg_first) != 0)
            return; // a later stream of the same number
        if (page.serial == serial_) {
            const auto sequence = static_cast<std::uint32_t>(little_endian(header.substr(sequence_at, 4)));
            const auto checksum =
                static_cast<std::uint32_t>(little_endian(header.substr(sequence_at + 4, 4)));
            rewriting.replace(start + sequence_at, 8,
                              little_endian_bytes(sequence + by, 4)
                                  + little_endian_bytes(
                                      renumbered_checksum(checksum, page.end(), sequence, sequence + by), 4));
        }
        start += page.end();
    }
}

} // namespace vantaro::core::tags
