#include "vantaro/tags/id3v2/id3v2_frames.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/id3v2/id3v22.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/tag_store.h"

#include <algorithm>
#include <utility>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = 10;
constexpr std::size_t largest_tag = 0x0FFFFFFF + header_size;

// Bits of the second flag byte.
constexpr unsigned v23_coded = 0xE0; // compressed, encrypted, grouped
constexpr unsigned v24_grouped = 0x40;
constexpr unsigned v24_compressed_or_encrypted = 0x0C;
constexpr unsigned v24_unsynchronised = 0x02;
constexpr unsigned v24_length_indicator = 0x01;

std::uint32_t number(std::string_view bytes, unsigned bits_per_byte) {
    std::uint32_t result = 0;
    for (const char c : bytes)
        result = result << bits_per_byte | static_cast<unsigned char>(c);
    return result;
}

std::string number_bytes(std::size_t value, unsigned bits_per_byte) {
    std::string result;
    for (unsigned i = 4; i-- > 0;)
        result += static_cast<char>(value >> (i * bits_per_byte) & ((1U << bits_per_byte) - 1U));
    return result;
}

bool is_synchsafe(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool is_frame_id(std::string_view id) {
    return std::ranges::all_of(id, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

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

// Names that are none by the rules, of frames all the same: "tcom", and "TP1" with a blank or a NUL.
bool is_odd_frame_id(std::string_view id) {
    if (id.ends_with('\0'))
        id.remove_suffix(1);
    return std::ranges::all_of(id, [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == ' ';
    });
}

/// The frames of a tag or of a chapter, from `position` on.
class FrameReader {
public:
    FrameReader(std::string_view bytes, std::size_t position, unsigned version)
        : bytes_(bytes), version_(version), padding_(bytes.find_last_not_of('\0') + 1) {
        while (read_frame(position)) {
        }
        rest_ = std::min(position, bytes_.size());
    }

    std::vector<Id3v2Frame> take_frames() { return std::move(frames_); }
    /// What is left; it may end with padding.
    std::string_view left() const { return bytes_.substr(rest_); }
    /// The same without padding. The zeros at the end of a frame that is cut off are its own.
    std::string_view rest() const {
        return is_cut_off_ ? left() : bytes_.substr(rest_, std::max(padding_, rest_) - rest_);
    }

private:
    // How much speaks for a frame's end at a place.
    enum class End { none, zero, odd_name, certain };

    End end_at(std::size_t place) const {
        if (place > bytes_.size())
            return End::none;
        if (place == bytes_.size() || place >= padding_)
            return End::certain;
        if (bytes_.size() - place >= header_size) {
            if (is_frame_id(bytes_.substr(place, 4)))
                return End::certain;
            if (is_odd_frame_id(bytes_.substr(place, 4)))
                return End::odd_name;
        }
        return bytes_[place] == 0 ? End::zero : End::none;
    }

    // Some programs write plain sizes into 2.4 frames. What stands behind the frame tells which it is. A zero
    // says little: it may be padding, and it may be one of the many in a picture.
    std::size_t frame_size(std::size_t position) const {
        const std::string_view field = bytes_.substr(position + 4, 4);
        const std::size_t plain = number(field, 8);
        if (version_ != 4 || !is_synchsafe(field))
            return plain;
        const std::size_t synchsafe = number(field, 7);
        const std::size_t body = position + header_size;
        return end_at(body + plain) > end_at(body + synchsafe) ? plain : synchsafe;
    }

    bool read_frame(std::size_t& position) {
        if (position > bytes_.size() || bytes_.size() - position < header_size || position >= padding_)
            return false;
        const std::string_view id = bytes_.substr(position, 4);
        const bool is_usual = is_frame_id(id);
        if (!is_usual && !is_odd_frame_id(id))
            return false;
        const std::size_t size = frame_size(position);
        const std::size_t body = position + header_size;
        if (size > bytes_.size() - body) {
            is_cut_off_ = is_usual;
            return false;
        }
        if (!is_usual && end_at(body + size) < End::odd_name)
            return false;
        const auto flags = static_cast<std::uint16_t>(number(bytes_.substr(position + 8, 2), 8));
        Id3v2Frame& frame =
            frames_.emplace_back(Id3v2Frame{std::string(id), flags, std::string(bytes_.substr(body, size))});
        if (const std::string name = is_usual ? "" : name_of_v22(id); !name.empty())
            frame.stored_id = std::exchange(frame.id, name);
        position = body + size;
        return true;
    }

    std::string_view bytes_;
    unsigned version_;
    std::size_t padding_; ///< from here on there are only zeros
    std::size_t rest_ = 0;
    bool is_cut_off_ = false;
    std::vector<Id3v2Frame> frames_;
};

std::size_t extended_header_size(std::string_view bytes, unsigned version) {
    if (bytes.size() < 4)
        return bytes.size();
    const std::size_t size =
        version == 3 ? std::size_t{number(bytes.substr(0, 4), 8)} + 4 : number(bytes.substr(0, 4), 7);
    return std::min(size, bytes.size());
}

std::string render_frames(const std::vector<Id3v2Frame>& frames, int version) {
    std::string result;
    for (const Id3v2Frame& frame : frames) {
        result += frame.stored_id.empty() ? frame.id : frame.stored_id;
        result += number_bytes(frame.body.size(), version == 4 ? 7 : 8);
        result += static_cast<char>(frame.flags >> 8);
        result += static_cast<char>(frame.flags & 0xFF);
        result += frame.body;
    }
    return result;
}

std::string render_whole(const Id3v2Tag& tag, const std::string& content, std::size_t size) {
    std::string result = "ID3";
    result += static_cast<char>(tag.version);
    result += std::string(2, '\0');
    result += number_bytes(size - header_size, 7);
    result += content;
    result.resize(size);
    return result;
}

// Whether the frames in these bytes end where those of the tag do.
bool reads_back(const Id3v2Tag& tag, std::string_view bytes) {
    FrameReader reader(bytes, header_size, static_cast<unsigned>(tag.version));
    const std::vector<Id3v2Frame> frames = reader.take_frames();
    return reader.rest() == tag.rest
           && std::ranges::equal(frames, tag.frames, {}, &Id3v2Frame::body, &Id3v2Frame::body);
}

void restructure(std::vector<Id3v2Frame>& frames);

// Chapters hold frames of their own behind a head of known form.
void restructure_chapter(Id3v2Frame& frame) {
    std::size_t head = frame.body.find('\0');
    if (head == std::string::npos)
        return;
    head += 1;
    if (frame.id == "CHAP") {
        head += 16; // four times
    } else if (head + 2 <= frame.body.size()) {
        auto children = static_cast<unsigned char>(frame.body[head + 1]);
        head += 2;
        for (; children > 0; --children) {
            const std::size_t end = frame.body.find('\0', head);
            if (end == std::string::npos)
                return;
            head = end + 1;
        }
    }
    if (head >= frame.body.size())
        return;
    FrameReader reader(frame.body, head, 3);
    std::vector<Id3v2Frame> frames = reader.take_frames();
    restructure(frames);
    frame.body = frame.body.substr(0, head) + render_frames(frames, 4) + std::string(reader.left());
}

void restructure(std::vector<Id3v2Frame>& frames) {
    for (Id3v2Frame& frame : frames) {
        if ((frame.flags & v23_coded) != 0)
            throw Refused("the ID3v2.3 tag has a compressed or encrypted frame, so it cannot become ID3v2.4");
        frame.flags = static_cast<std::uint16_t>(frame.flags >> 1 & 0x7000); // the status bits move by one
        frame.stored_id.clear();
        if (is_picture_of_v22(frame.id)) {
            frame.id = "APIC";
            frame.body = converted_picture(frame.body);
        }
        if (frame.id == "CHAP" || frame.id == "CTOC")
            restructure_chapter(frame);
    }
}

} // namespace

std::size_t id3v2_size(std::string_view bytes) {
    if (bytes.size() < header_size || !bytes.starts_with("ID3") || bytes[3] == '\xFF' || bytes[4] == '\xFF'
        || !is_synchsafe(bytes.substr(6, 4)))
        return 0;
    const bool footer = bytes[3] == 4 && (bytes[5] & 0x10) != 0;
    return number(bytes.substr(6, 4), 7) + header_size * (footer ? 2 : 1);
}

Id3v2Tag parse_id3v2(std::string_view bytes) {
    const std::size_t size = id3v2_size(bytes);
    if (size == 0 || bytes[3] < 2 || bytes[3] > 4)
        throw vantaro_io::exception_io_data("Unknown version of ID3v2");
    const auto version = static_cast<unsigned char>(bytes[3]);
    const auto flags = static_cast<unsigned char>(bytes[5]);
    const bool footer = version == 4 && (flags & 0x10) != 0;
    bytes = bytes.substr(0, size).substr(header_size);
    if (footer && bytes.size() >= header_size)
        bytes.remove_suffix(header_size);
    std::string decoded;
    if ((flags & 0x80) != 0 && version < 4) {
        decoded = without_unsynchronisation(bytes);
        bytes = decoded;
    }
    if (version == 2) {
        std::vector<Id3v2Frame> frames = take_v22_frames(bytes);
        return {3, std::move(frames), std::string(bytes.substr(0, bytes.find_last_not_of('\0') + 1)), true};
    }
    const std::size_t start = (flags & 0x40) != 0 ? extended_header_size(bytes, version) : 0;
    FrameReader reader(bytes, start, version);
    Id3v2Tag tag{static_cast<int>(version), reader.take_frames(), std::string(reader.rest())};
    // The header speaks for all frames; it is written back without that flag.
    if ((flags & 0x80) != 0 && version == 4)
        for (Id3v2Frame& frame : tag.frames)
            frame.flags |= v24_unsynchronised;
    return tag;
}

std::string render_id3v2(const Id3v2Tag& tag, std::size_t room, std::size_t beside, std::size_t most) {
    if (tag.was_v22 && !tag.rest.empty())
        throw vantaro_io::exception_io("There is something behind the frames of the ID3v2.2 tag that is "
                                       "none, so it cannot become ID3v2.3");
    const std::string frames = render_frames(tag.frames, tag.version) + tag.rest;
    const std::size_t needed = header_size + frames.size();
    const std::size_t limit = std::min(largest_tag, most) + beside;
    const std::size_t size = padded_size(needed + beside, room, {.limit = limit}) - beside;
    if (size > largest_tag)
        throw vantaro_io::exception_io("The ID3v2 tag would become larger than 256 MiB");
    std::string result = render_whole(tag, frames, size);
    if (tag.rest.empty() || reads_back(tag, result))
        return result;
    // The rest is a frame that is cut off. Padding would make it whole again, and that must not be.
    result = render_whole(tag, frames, needed);
    if (!reads_back(tag, result))
        throw vantaro_io::exception_io("The ID3v2 tag is damaged where its frames end");
    return result;
}

std::optional<std::string> frame_content(const Id3v2Tag& tag, const Id3v2Frame& frame) {
    const unsigned flags = frame.flags & 0xFF;
    std::string_view body = frame.body;
    if (tag.version == 3) {
        if ((flags & v23_coded) == 0)
            return frame.body;
        if ((flags & v23_coded) != 0x20) // more than grouped
            return std::nullopt;
        return std::string(body.substr(std::min<std::size_t>(1, body.size())));
    }
    if ((flags & v24_compressed_or_encrypted) != 0)
        return std::nullopt;
    const std::size_t head =
        ((flags & v24_grouped) != 0 ? 1U : 0U) + ((flags & v24_length_indicator) != 0 ? 4U : 0U);
    body.remove_prefix(std::min(head, body.size()));
    return (flags & v24_unsynchronised) != 0 ? without_unsynchronisation(body) : std::string(body);
}

void restructure_as_v24(Id3v2Tag& tag) {
    if (!tag.rest.empty())
        throw Refused(
            "there is something behind the frames of the ID3v2.3 tag that is none, so it cannot become"
            " ID3v2.4");
    restructure(tag.frames);
    tag.version = 4;
}

} // namespace vantaro::core::tags
