// The elements of a Matroska file's segment (RFC 9559): where they stand, without the clusters of audio.
//
//     Segment segment(file, 0);
//     if (const SegmentPart* info = segment.find(info_id)) ...
//
// What stands in front of the clusters is found by walking; what stands behind them by the index (SeekHead),
// and from the last place that it names by walking on. Where it names nothing, and there are no tags in
// front, a limited number of clusters is passed.
#pragma once

#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/matroska/ebml.h"

#include <string>
#include <vector>

namespace vantaro::core::tags {

constexpr std::uint32_t index_id = 0x114D9B74;
constexpr std::uint32_t info_id = 0x1549A966;
constexpr std::uint32_t tracks_id = 0x1654AE6B;
constexpr std::uint32_t tags_id = 0x1254C367;

struct SegmentPart {
    std::uint32_t id;
    std::size_t start;
    std::size_t header_size;
    std::size_t size; ///< with the header

    std::size_t end() const { return start + size; }
    std::size_t body() const { return start + header_size; }
    std::size_t body_size() const { return size - header_size; }
};

class Segment {
public:
    /// `file` outlives it; `start` is where the EBML header begins. Throws exception_io_data.
    Segment(FileBytes& file, std::size_t start);

    /// The first, or null.
    const SegmentPart* find(std::uint32_t id) const;
    std::string_view body(const SegmentPart& part) const;

    /// Replaces the Tags element by one with this content, or takes it away when there is none. It keeps its
    /// place where it fits in with the Void elements behind it, and goes to the end of the segment otherwise;
    /// nothing that an index points to is moved. A checksum over the whole segment, and one of the index
    /// where that changes, goes. Throws exception_io with the reason.
    void write_tags(Rewriting& rewriting, std::string_view content);

private:
    void walk_front();
    void follow_index();
    std::optional<SegmentPart> part_at(std::size_t start) const;
    bool walk(std::size_t start);
    std::size_t end_with_voids(std::size_t end) const;
    void append(Rewriting& rewriting, std::string_view content);
    void grow(Rewriting& rewriting, std::size_t growth) const;
    bool put_in_index(Rewriting& rewriting, std::optional<std::size_t> place) const;

    FileBytes& file_;
    std::size_t size_start_ = 0; ///< of the field that holds the segment's size
    EbmlHeader header_;
    std::size_t start_ = 0; ///< of the content
    std::size_t end_ = 0;
    std::size_t clusters_ = 0;       ///< where they begin
    std::vector<SegmentPart> parts_; ///< in the order of the file, apart from each other
};

} // namespace vantaro::core::tags
