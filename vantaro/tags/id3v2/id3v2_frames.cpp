#include "vantaro/tags/id3v2/id3v2_frames.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/id3v2/id3v22.h"
#include "vantaro/tags/id3v2/id3v2_names.h"
#include "vantaro/tags/id3v2/id3v2_reader.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/tag_store.h"

#include <zlib.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = id3v2_header_size;
constexpr std::size_t largest_tag = 0x0FFFFFFF + header_size;
/// What the compressed frames of a tag may come to.
constexpr std::size_t most_expanded = 16 << 20;

// Bits of the second flag byte.
constexpr unsigned v23_compressed = 0x80;
constexpr unsigned v23_encrypted = 0x40;
constexpr unsigned v23_grouped = 0x20;
constexpr unsigned v23_coded = v23_compressed | v23_encrypted | v23_grouped;
constexpr unsigned v24_grouped = 0x40;
constexpr unsigned v24_compressed = 0x08;
constexpr unsigned v24_encrypted = 0x04;
constexpr unsigned v24_unsynchronised = 0x02;
constexpr unsigned v24_length_indicator = 0x01;

std::string without_unsynchronisation(std::string_view bytes) {
    std::string result;
    result.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        result += bytes[i];
        if (bytes[i] == '\xFF' && i + 1 < bytes.size() && bytes[i + 1] == 0)
            ++i;
    }
    return result;
}

// Some programs set the flag and write none.
std::size_t extended_header_size(std::string_view size_field, unsigned version) {
    if (is_frame_id(size_field))
        return 0;
    return version == 3 ? std::size_t{number(size_field, 8)} + 4 : number(size_field, 7);
}

void append_frames(std::vector<Part>& parts, const Id3v2Tag& tag) {
    for (const Id3v2Frame& frame : tag.frames) {
        const bool is_old_picture = tag.was_v22 && is_picture_of_v22(frame.id);
        const Part body = is_old_picture ? Part(converted_picture(frame.body.bytes())) : frame.body;
        std::string header = is_old_picture ? "APIC" : frame.stored_id.empty() ? frame.id : frame.stored_id;
        header += number_bytes(body.size(), tag.version == 4 ? 7 : 8);
        header += static_cast<char>(frame.flags >> 8);
        header += static_cast<char>(frame.flags & 0xFF);
        parts.emplace_back(std::move(header));
        parts.push_back(body);
    }
}

// The frames and the rest, behind an empty part for the header.
std::vector<Part> content_of(const Id3v2Tag& tag) {
    std::vector<Part> parts(1);
    append_frames(parts, tag);
    parts.emplace_back(tag.rest);
    return parts;
}

std::size_t size_of(const std::vector<Part>& parts) {
    return std::accumulate(parts.begin(), parts.end(), std::size_t{0},
                           [](std::size_t sum, const Part& part) { return sum + part.size(); });
}

std::vector<Part> render_whole(const Id3v2Tag& tag, std::vector<Part> content, std::size_t size) {
    std::string header = "ID3";
    header += static_cast<char>(tag.version);
    header += std::string(2, '\0');
    header += number_bytes(size - header_size, 7);
    content.front() = Part(std::move(header));
    content.emplace_back(std::string(size - size_of(content), '\0'));
    return content;
}

// Whether the frames in these bytes end where those of the tag do.
bool reads_back(const Id3v2Tag& tag, const std::vector<Part>& parts) {
    // As one made for it, so that no frame reaches over the end of a part: a few bytes are looked at only.
    FrameReader reader(Sequence(parts), header_size, static_cast<unsigned>(tag.version));
    const auto size_of_body = [](const Id3v2Frame& frame) { return frame.body.size(); };
    return reader.rest_size() == tag.rest.size()
           && std::ranges::equal(reader.take_frames(), tag.frames, {}, size_of_body, size_of_body);
}

void restructure(std::vector<Id3v2Frame>& frames);

// Chapters hold frames of their own behind a head of known form.
void restructure_chapter(Id3v2Frame& frame) {
    const std::string_view body = frame.body.bytes();
    std::size_t head = body.find('\0');
    if (head == body.npos)
        return;
    head += 1;
    if (frame.id == "CHAP") {
        head += 16; // four times
    } else if (head + 2 <= body.size()) {
        auto children = static_cast<unsigned char>(body[head + 1]);
        head += 2;
        for (; children > 0; --children) {
            const std::size_t end = body.find('\0', head);
            if (end == body.npos)
                return;
            head = end + 1;
        }
    }
    if (head >= body.size())
        return;
    FrameReader reader(Sequence({frame.body}), head, 3);
    std::vector<Id3v2Frame> frames = reader.take_frames();
    restructure(frames);
    std::vector<Part> parts{Part(std::string(body.substr(0, head)))};
    append_frames(parts, {4, std::move(frames)});
    std::string changed;
    for (const Part& part : parts)
        changed += part.bytes();
    frame.body = Part(changed + reader.left());
}

// In 2.3 the size stands before the group, in 2.4 behind it.
void restructure_coding(Id3v2Frame& frame, unsigned coding) {
    if ((coding & v23_encrypted) != 0)
        throw Refused("the ID3v2.3 tag has an encrypted frame, so it cannot become ID3v2.4");
    const bool is_compressed = (coding & v23_compressed) != 0;
    const bool is_grouped = (coding & v23_grouped) != 0;
    const std::string_view body = frame.body.bytes();
    const std::size_t size_field = is_compressed ? 4 : 0;
    if (body.size() < size_field + (is_grouped ? 1 : 0))
        throw Refused("the ID3v2.3 tag has a damaged frame, so it cannot become ID3v2.4");
    std::string changed(body.substr(size_field, is_grouped ? 1 : 0));
    if (is_compressed) {
        const std::uint32_t size = number(body.substr(0, 4), 8);
        if (size > 0x0FFFFFFF)
            throw Refused("the ID3v2.3 tag has a frame that is too large for ID3v2.4");
        changed += number_bytes(size, 7);
        frame.flags |= v24_compressed | v24_length_indicator;
    }
    if (is_grouped)
        frame.flags |= v24_grouped;
    frame.body = Part(changed + std::string(body.substr(size_field + (is_grouped ? 1 : 0))));
}

void restructure(std::vector<Id3v2Frame>& frames) {
    for (Id3v2Frame& frame : frames) {
        const unsigned coding = frame.flags & v23_coded;
        frame.flags = static_cast<std::uint16_t>(frame.flags >> 1 & 0x7000); // the status bits move by one
        frame.stored_id.clear();
        if (coding != 0) {
            restructure_coding(frame, coding);
            continue;
        }
        if (is_picture_of_v22(frame.id)) {
            frame.id = "APIC";
            frame.body = converted_picture(frame.body.bytes());
        }
        if (frame.id == "CHAP" || frame.id == "CTOC")
            restructure_chapter(frame);
    }
}

/// Nothing when these are no deflated bytes of that size. `left` is what may become of the frames of a tag
/// altogether: a few bytes can hold very many.
std::optional<std::string> inflate(std::string_view packed, std::size_t size, std::size_t& left) {
    constexpr std::size_t highest_ratio = 1032;
    if (size > left || size / highest_ratio > packed.size())
        return std::nullopt;
    left -= size;
    std::string result(size, '\0');
    uLongf got = size;
    const int state = ::uncompress(reinterpret_cast<Bytef*>(result.data()), &got,
                                   reinterpret_cast<const Bytef*>(packed.data()), packed.size());
    if (state != Z_OK || got != size)
        return std::nullopt;
    return result;
}

void expand(const Id3v2Tag& tag, Id3v2Frame& frame, std::size_t& left) {
    const unsigned flags = frame.flags & 0xFF;
    const bool is_v23 = tag.version == 3;
    // Without the length nobody knows how much memory it may take.
    const unsigned needed = is_v23 ? v23_compressed : v24_compressed | v24_length_indicator;
    if ((flags & needed) != needed || (flags & (is_v23 ? v23_encrypted : v24_encrypted)) != 0
        || !may_hold_field(frame.id))
        return;
    const std::size_t group = (flags & (is_v23 ? v23_grouped : v24_grouped)) != 0 ? 1 : 0;
    std::string_view body = frame.body.bytes();
    if (body.size() < group + 4)
        return;
    const std::size_t size = is_v23 ? number(body.substr(0, 4), 8) : number(body.substr(group, 4), 7);
    body.remove_prefix(group + 4);
    if (!is_v23 && (flags & v24_unsynchronised) != 0)
        frame.expanded = inflate(without_unsynchronisation(body), size, left);
    else
        frame.expanded = inflate(body, size, left);
}

} // namespace

std::size_t id3v2_size(std::string_view bytes) {
    if (bytes.size() < header_size || !bytes.starts_with("ID3") || bytes[3] == '\xFF' || bytes[4] == '\xFF'
        || !is_synchsafe(bytes.substr(6, 4)))
        return 0;
    const bool footer = bytes[3] == 4 && (bytes[5] & 0x10) != 0;
    return number(bytes.substr(6, 4), 7) + header_size * (footer ? 2 : 1);
}

Id3v2Tag parse_id3v2(FileBytes& file, std::size_t start, std::size_t size) {
    const std::string_view header = file.some(start, header_size);
    const std::size_t whole = std::min(size, id3v2_size(header));
    if (whole < header_size || header[3] < 2 || header[3] > 4)
        throw vantaro_io::exception_io_data("The ID3v2 tag is of no version that is known");
    file.note_tag(start, whole);
    const auto version = static_cast<unsigned char>(header[3]);
    const auto flags = static_cast<unsigned char>(header[5]);
    const bool footer = version == 4 && (flags & 0x10) != 0 && whole >= 2 * header_size;
    Part content(file, start + header_size, whole - header_size * (footer ? 2 : 1));
    const bool is_unsynchronised = (flags & 0x80) != 0;
    if (is_unsynchronised && version < 4)
        content = Part(without_unsynchronisation(content.bytes()));
    if (version == 2)
        return parse_v22_frames(content);
    std::size_t first = 0;
    if ((flags & 0x40) != 0 && content.size() >= 4)
        first = extended_header_size(content.head(4), version);
    if (first > content.size())
        throw vantaro_io::exception_io_data("The extended header of the ID3v2 tag is longer than the tag");
    FrameReader reader(Sequence({content}), first, version);
    Id3v2Tag tag{static_cast<int>(version), reader.take_frames(), reader.rest()};
    std::size_t left = most_expanded;
    for (Id3v2Frame& frame : tag.frames) {
        // The header speaks for all frames; it is written back without that flag.
        if (is_unsynchronised && version == 4)
            frame.flags |= v24_unsynchronised;
        expand(tag, frame, left);
    }
    return tag;
}

std::vector<Part> render_id3v2(const Id3v2Tag& tag, std::size_t room, std::size_t beside, std::size_t most) {
    if (tag.was_v22 && !tag.rest.empty())
        throw vantaro_io::exception_io("There is something behind the frames of the ID3v2.2 tag that is "
                                       "none, so it cannot become ID3v2.3");
    const std::vector<Part> content = content_of(tag);
    const std::size_t needed = header_size + size_of(content);
    const std::size_t limit = std::min(largest_tag, most) + beside;
    const std::size_t size = padded_size(needed + beside, room, {.limit = limit}) - beside;
    if (size > largest_tag)
        throw vantaro_io::exception_io("The ID3v2 tag would become larger than 256 MiB");
    std::vector<Part> result = render_whole(tag, content, size);
    if (tag.rest.empty() || reads_back(tag, result))
        return result;
    // The rest is a frame that is cut off. Padding would make it whole again, and that must not be.
    result = render_whole(tag, content, needed);
    if (!reads_back(tag, result))
        throw vantaro_io::exception_io("The ID3v2 tag is damaged where its frames end");
    return result;
}

bool has_content(const Id3v2Tag& tag, const Id3v2Frame& frame) {
    const unsigned hidden =
        tag.version == 3 ? v23_compressed | v23_encrypted : v24_compressed | v24_encrypted;
    return frame.expanded.has_value() || (frame.flags & hidden) == 0;
}

std::optional<std::string> frame_content(const Id3v2Tag& tag, const Id3v2Frame& frame) {
    if (!has_content(tag, frame))
        return std::nullopt;
    if (frame.expanded)
        return frame.expanded;
    const unsigned flags = frame.flags & 0xFF;
    std::string_view body = frame.body.bytes();
    std::size_t head = 0;
    if ((flags & (tag.version == 3 ? v23_grouped : v24_grouped)) != 0)
        head += 1;
    if (tag.version == 4 && (flags & v24_length_indicator) != 0)
        head += 4;
    body.remove_prefix(std::min(head, body.size()));
    return tag.version == 4 && (flags & v24_unsynchronised) != 0 ? without_unsynchronisation(body)
                                                                 : std::string(body);
}

void restructure_as_v24(Id3v2Tag& tag) {
    if (!tag.rest.empty())
        throw Refused(
            "there is something behind the frames of the ID3v2.3 tag that is none, so it cannot become"
            " ID3v2.4");
    std::vector<Id3v2Frame> frames = tag.frames; // one of them may refuse
    restructure(frames);
    tag.frames = std::move(frames);
    tag.version = 4;
}

} // namespace vantaro::core::tags
