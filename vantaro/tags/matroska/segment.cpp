#include "vantaro/tags/matroska/segment.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/padding.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr std::uint32_t ebml_header_id = 0x1A45DFA3;
constexpr std::uint32_t document_type_id = 0x4282;
constexpr std::uint32_t segment_id = 0x18538067;
constexpr std::uint32_t cluster_id = 0x1F43B675;
constexpr std::uint32_t entry_id = 0x4DBB;
constexpr std::uint32_t entry_for_id = 0x53AB;
constexpr std::uint32_t entry_place_id = 0x53AC;

/// Each may be a look at another place of the file.
constexpr int most_parts = 1000;
constexpr std::size_t largest_head = 4096;
constexpr std::size_t largest_body = 64 << 20;

/// An element that fills exactly so much, with Void behind it where a longer size field is not enough.
std::string filled(std::uint32_t id, std::string_view body, std::size_t room) {
    std::string bytes = make_element(id, body);
    if (bytes.size() + 1 == room)
        return make_element(id, body, ebml_header(bytes)->size_width + 1);
    return bytes + make_void(room - bytes.size());
}

} // namespace

Segment::Segment(FileBytes& file, std::size_t start) : file_(file) {
    const std::optional<EbmlHeader> head = ebml_header(file.some(start, largest_ebml_header));
    if (!head || head->id != ebml_header_id || !head->size || *head->size > largest_head)
        throw vantaro_io::exception_io_data("The file is called Matroska, but has no EBML header");
    const std::string_view type =
        find_child(file.bytes(start + head->header_size, *head->size), document_type_id);
    if (type != "matroska" && type != "webm")
        throw vantaro_io::exception_io_data("The file is of EBML, but neither Matroska nor WebM");
    std::size_t place = start + head->header_size + *head->size;
    for (int count = 0;; ++count) {
        const std::optional<EbmlHeader> next = ebml_header(file.some(place, largest_ebml_header));
        const std::size_t left = file.size() - std::min(file.size(), place);
        if (!next || count == most_parts || next->header_size > left
            || (next->size && *next->size > left - next->header_size))
            throw vantaro_io::exception_io_data(
                "The Matroska file has no segment, or one larger than the file");
        start_ = place + next->header_size;
        end_ = next->size ? start_ + *next->size : file.size();
        header_ = *next;
        if (next->id == segment_id)
            break;
        if (!next->size)
            throw vantaro_io::exception_io_data("The Matroska file has no segment");
        place = end_;
    }
    size_start_ = start_ - header_.size_width;
    walk_front();
    follow_index();
}

// An element whose end is known, or nothing.
std::optional<SegmentPart> Segment::part_at(std::size_t start) const {
    if (start >= end_)
        return std::nullopt;
    const std::optional<EbmlHeader> header =
        ebml_header(file_.some(start, std::min(largest_ebml_header, end_ - start)));
    if (!header || !header->size || *header->size > end_ - start - header->header_size)
        return std::nullopt;
    return SegmentPart{header->id, start, header->header_size, header->header_size + *header->size};
}

void Segment::walk_front() {
    clusters_ = start_;
    while (clusters_ < end_) {
        const std::optional<EbmlHeader> header = ebml_header(file_.some(clusters_, largest_ebml_header));
        if (header && header->id == cluster_id)
            return;
        const std::optional<SegmentPart> part = part_at(clusters_);
        if (!part || parts_.size() == most_parts)
            throw vantaro_io::exception_io_data("An element of the Matroska file is larger than its segment");
        parts_.push_back(*part);
        clusters_ = part->end();
    }
}

// Whether the end of the segment is reached.
bool Segment::walk(std::size_t start) {
    std::size_t place = start;
    for (int count = 0; count < most_parts && place < end_; ++count) {
        const std::optional<SegmentPart> part = part_at(place);
        if (!part)
            return false;
        if (part->id != cluster_id && std::ranges::find(parts_, place, &SegmentPart::start) == parts_.end())
            parts_.push_back(*part);
        place = part->end();
    }
    return place >= end_;
}

void Segment::follow_index() {
    std::size_t last = clusters_;
    if (const SegmentPart* index = find(index_id)) {
        std::string_view entries = body(*index);
        std::vector<SegmentPart> found;
        for (int count = 0; count < most_parts; ++count) {
            const std::optional<EbmlElement> entry = take_element(entries);
            if (!entry)
                break;
            const std::string_view number = find_child(entry->body, entry_place_id);
            if (entry->id != entry_id || number.size() > 8)
                continue;
            const std::uint64_t place = big_endian(number);
            if (place >= end_ - start_ || start_ + place <= clusters_)
                continue;
            const std::optional<SegmentPart> part = part_at(start_ + place);
            if (part && ebml_id(part->id) == find_child(entry->body, entry_for_id)) {
                last = std::max(last, part->start);
                if (part->id == tags_id)
                    found.push_back(*part);
            }
        }
        parts_.insert(parts_.end(), found.begin(), found.end());
    }
    if (last > clusters_ || find(tags_id) == nullptr)
        walk(last);
    std::ranges::sort(parts_, {}, &SegmentPart::start);
    for (std::size_t i = 1; i < parts_.size();)
        if (parts_[i].start < parts_[i - 1].end())
            parts_.erase(parts_.begin() + static_cast<std::ptrdiff_t>(i));
        else
            ++i;
}

const SegmentPart* Segment::find(std::uint32_t id) const {
    const auto found = std::ranges::find(parts_, id, &SegmentPart::id);
    return found == parts_.end() ? nullptr : &*found;
}

std::string_view Segment::body(const SegmentPart& part) const {
    if (part.body_size() > largest_body)
        throw vantaro_io::exception_io_data(
            "The Matroska file has an element of more than 64 MiB in its header");
    return file_.bytes(part.body(), part.body_size());
}

/// Of the Void elements that begin at `end`.
std::size_t Segment::end_with_voids(std::size_t end) const {
    for (const SegmentPart& part : parts_)
        if (part.id == void_id && part.start == end)
            end = part.end();
    return end;
}

void Segment::write_tags(Rewriting& rewriting, std::string_view content) {
    if (!parts_.empty() && parts_.front().id == checksum_id)
        rewriting.replace(parts_.front().start, parts_.front().size, make_void(parts_.front().size));
    const SegmentPart* old = find(tags_id);
    if (old == nullptr) {
        if (!content.empty())
            append(rewriting, content);
        return;
    }
    const SegmentPart part = *old;
    const std::size_t end = end_with_voids(part.end());
    const std::size_t room = end - part.start;
    const std::size_t needed = content.empty() ? 0 : make_element(tags_id, content).size();
    if (content.empty()) {
        rewriting.replace(part.start, room, make_void(room));
        put_in_index(rewriting, std::nullopt);
    } else if (needed <= room) {
        rewriting.replace(part.start, room, filled(tags_id, content, room));
    } else if (end == end_) {
        const std::size_t size = padded_size(needed, room, {.header = least_void});
        rewriting.replace(part.start, room, filled(tags_id, content, size));
        grow(rewriting, size - room);
    } else {
        if (std::ranges::count(parts_, tags_id, &SegmentPart::id) > 1)
            throw vantaro_io::exception_io("The file has several Tags elements, and no room in the first");
        rewriting.replace(part.start, room, make_void(room));
        append(rewriting, content);
    }
}

void Segment::append(Rewriting& rewriting, std::string_view content) {
    std::size_t place = end_;
    for (auto part = parts_.rbegin();
         part != parts_.rend() && part->id == void_id && part->end() == place && part->start > clusters_;
         ++part)
        place = part->start;
    if (!put_in_index(rewriting, place)) {
        std::size_t last = clusters_;
        for (const SegmentPart& part : parts_)
            if (part.start > last && part.id != tags_id)
                last = part.start;
        // The next reading has to find it by walking.
        if (!walk(last))
            throw vantaro_io::exception_io(
                "The index of the Matroska file has no room for the place of the tags, without which they "
                "would not be found");
    }
    const std::size_t needed = make_element(tags_id, content).size();
    const std::size_t size = padded_size(needed, end_ - place, {.header = least_void});
    rewriting.replace(place, end_ - place, filled(tags_id, content, size));
    grow(rewriting, size - (end_ - place));
}

void Segment::grow(Rewriting& rewriting, std::size_t growth) const {
    if (!header_.size || growth == 0)
        return;
    const std::uint64_t size = *header_.size + growth;
    if (size > largest_ebml_size(header_.size_width))
        throw vantaro_io::exception_io(
            "The tags need more room, and the size of the Matroska segment has no digits for it");
    rewriting.replace(size_start_, header_.size_width, ebml_size(size, header_.size_width));
}

// Lets the index name this place for the tags, and no other. Whether it does then.
bool Segment::put_in_index(Rewriting& rewriting, std::optional<std::size_t> place) const {
    const SegmentPart* index = find(index_id);
    if (index == nullptr || index->start > clusters_)
        return false;
    std::string others;
    std::string_view entries = body(*index);
    while (const std::optional<EbmlElement> entry = take_element(entries))
        if (entry->id != checksum_id && entry->id != void_id
            && find_child(entry->body, entry_for_id) != ebml_id(tags_id))
            others += entry->whole;
    others += entries;
    std::string entry;
    if (place) {
        std::string number = big_endian_bytes(*place - start_, 8);
        number.erase(0, number.find_first_not_of('\0'));
        entry = make_element(entry_id, make_element(entry_for_id, ebml_id(tags_id))
                                           + make_element(entry_place_id, number));
    }
    const std::size_t room = end_with_voids(index->end()) - index->start;
    const bool fits = make_element(index_id, others + entry).size() <= room;
    if (!fits)
        entry.clear();
    if (make_element(index_id, others + entry).size() > room)
        return false;
    rewriting.replace(index->start, room, filled(index_id, others + entry, room));
    return fits && place;
}

} // namespace vantaro::core::tags
