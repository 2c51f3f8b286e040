// The packets at the beginning of one stream of an Ogg file, and how they get other bytes.
//
//     OggStream stream(file, first_page);
//     std::string comment = stream.packet_bytes(1);
//     stream.replace(rewriting, 1, "OpusTags...", 2);
//
// One thread at a time.
#pragma once

#include "vantaro/tags/xiph/ogg_page.h"

namespace vantaro::core::tags {

class OggStream {
public:
    /// `file` outlives it.
    OggStream(FileBytes& file, const OggPage& first_page);

    std::uint32_t serial() const { return serial_; }
    /// Both throw exception_io_data when the stream has no such packet, or it is no beginning of a file: too
    /// much stands in front of it.
    std::size_t packet_size(std::size_t index);
    std::string packet_bytes(std::size_t index);

    /// Gives a packet other bytes. The pages that it shares with others are laid out anew, as many as there
    /// were if that is possible; else all later pages of the stream get other numbers. The `headers` first
    /// packets share no page with those behind them. The other streams' pages stay as they are.
    void replace(Rewriting& rewriting, std::size_t index, const std::string& bytes, std::size_t headers);

private:
    struct Packet {
        std::size_t first_page;
        std::size_t last_page;
        std::size_t size;
        std::vector<Extent> pieces;
    };
    /// Of one or more new pages, one behind the other.
    struct Group {
        std::string laces;
        std::string body;
    };

    void read_page();
    const Packet& packet(std::size_t index);
    std::string bytes_of(const Packet& packet);
    std::size_t last_shared_page(std::size_t page);
    void renumber(Rewriting& rewriting, std::size_t start, std::uint32_t by);

    FileBytes& file_;
    std::uint32_t serial_;
    std::size_t next_; ///< where the next page begins
    std::size_t overhead_ = 0;
    std::size_t foreign_ = 0;
    std::size_t read_ = 0;
    bool is_open_ = false; ///< the last packet goes on
    std::vector<OggPage> pages_;
    std::vector<Packet> packets_;
};

} // namespace vantaro::core::tags
