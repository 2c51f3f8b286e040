// Finds the frames in the bytes of a tag or a chapter, without reading their bodies.
//
//     FrameReader reader(Sequence({part}), 0, 4);
//     std::vector<Id3v2Frame> frames = reader.take_frames();
//
// One thread at a time. Both throw what reading the file throws.
#pragma once

#include "vantaro/tags/id3v2/id3v22.h"
#include "vantaro/tags/id3v2/id3v2_frames.h"

#include <algorithm>
#include <utility>

namespace vantaro::core::tags {

inline std::uint32_t number(std::string_view bytes, unsigned bits_per_byte) {
    std::uint32_t result = 0;
    for (const char c : bytes)
        result = result << bits_per_byte | static_cast<unsigned char>(c);
    return result;
}

inline std::string number_bytes(std::size_t value, unsigned bits_per_byte) {
    std::string result;
    for (unsigned i = 4; i-- > 0;)
        result += static_cast<char>(value >> (i * bits_per_byte) & ((1U << bits_per_byte) - 1U));
    return result;
}

inline bool is_synchsafe(std::string_view bytes) {
    return std::ranges::all_of(bytes, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

inline bool is_frame_id(std::string_view id) {
    return std::ranges::all_of(id, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

// Names that are none by the rules, of frames all the same: "tcom", and "TP1" with a blank or a NUL.
inline bool is_odd_frame_id(std::string_view id) {
    if (id.ends_with('\0'))
        id.remove_suffix(1);
    return std::ranges::all_of(id, [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == ' ';
    });
}

/// Bytes that frames stand in: parts of a file and made ones, one behind the other.
class Sequence {
public:
    explicit Sequence(std::vector<Part> parts) : parts_(std::move(parts)) {
        for (const Part& part : parts_) {
            starts_.push_back(size_);
            size_ += part.size();
        }
    }

    std::size_t size() const { return size_; }
    /// A few; fewer at the end.
    std::string some(std::size_t start, std::size_t count) const {
        std::string result;
        count = std::min(count, size_ - std::min(start, size_));
        for (std::size_t i = index_at(start); result.size() < count; ++i) {
            const std::size_t from = start + result.size() - starts_[i];
            const std::size_t here = std::min(parts_[i].size() - from, count - result.size());
            result += parts_[i].bytes(from, here);
        }
        return result;
    }
    /// Requires: it does not reach from one part into the next.
    Part part(std::size_t start, std::size_t count) const {
        if (count == 0)
            return {};
        const std::size_t i = index_at(start);
        return parts_[i].part(start - starts_[i], count);
    }
    /// Where the zeros at the end begin. Looked for from the end: what stands before them is not read.
    std::size_t padding() const {
        std::size_t block = least_block;
        for (std::size_t i = parts_.size(); i-- > 0;)
            for (std::size_t end = parts_[i].size(); end > 0; block = std::min(2 * block, largest_block)) {
                const std::size_t start = end - std::min(end, block);
                const std::string_view bytes = parts_[i].bytes(start, end - start);
                if (const std::size_t last = bytes.find_last_not_of('\0'); last != bytes.npos)
                    return starts_[i] + start + last + 1;
                end = start;
            }
        return 0;
    }

private:
    static constexpr std::size_t least_block = 4 << 10;
    static constexpr std::size_t largest_block = 1 << 20;

    std::size_t index_at(std::size_t place) const {
        return static_cast<std::size_t>(std::ranges::upper_bound(starts_, place) - starts_.begin()) - 1;
    }

    std::vector<Part> parts_;
    std::vector<std::size_t> starts_;
    std::size_t size_ = 0;
};

/// The frames of a tag or of a chapter, from `position` on.
class FrameReader {
public:
    FrameReader(Sequence bytes, std::size_t position, unsigned version)
        : bytes_(std::move(bytes)), version_(version), padding_(bytes_.padding()) {
        while (read_frame(position)) {
        }
        rest_ = std::min(position, bytes_.size());
    }

    std::vector<Id3v2Frame> take_frames() { return std::move(frames_); }
    /// What is left; it may end with padding.
    std::string left() const { return bytes_.some(rest_, bytes_.size()); }
    /// Of the same without padding. The zeros at the end of a frame that is cut off are its own.
    std::size_t rest_size() const {
        return (is_cut_off_ ? bytes_.size() : std::max(padding_, rest_)) - rest_;
    }
    std::string rest() const { return bytes_.some(rest_, rest_size()); }

private:
    // How much speaks for a frame's end at a place.
    enum class End { none, zero, odd_name, certain };

    End end_at(std::size_t place) const {
        if (place > bytes_.size())
            return End::none;
        if (place == bytes_.size() || place >= padding_)
            return End::certain;
        const std::string next = bytes_.some(place, id3v2_header_size);
        if (next.size() == id3v2_header_size) {
            if (is_frame_id(next.substr(0, 4)))
                return End::certain;
            if (is_odd_frame_id(std::string_view(next).substr(0, 4)))
                return End::odd_name;
        }
        return next[0] == 0 ? End::zero : End::none;
    }

    // Some programs write plain sizes into 2.4 frames. What stands behind the frame tells which it is. A zero
    // says little: it may be padding, and it may be one of the many in a picture.
    std::size_t frame_size(std::size_t body, std::string_view field) const {
        const std::size_t plain = number(field, 8);
        if (version_ != 4 || !is_synchsafe(field))
            return plain;
        const std::size_t synchsafe = number(field, 7);
        if (synchsafe == plain)
            return plain;
        const End end = end_at(body + synchsafe);
        return end != End::certain && end_at(body + plain) > end ? plain : synchsafe;
    }

    bool read_frame(std::size_t& position) {
        if (position > bytes_.size() || bytes_.size() - position < id3v2_header_size || position >= padding_)
            return false;
        const std::string header = bytes_.some(position, id3v2_header_size);
        const std::string id = header.substr(0, 4);
        const bool is_usual = is_frame_id(id);
        if (!is_usual && !is_odd_frame_id(id))
            return false;
        const std::size_t body = position + id3v2_header_size;
        const std::size_t size = frame_size(body, std::string_view(header).substr(4, 4));
        if (size > bytes_.size() - body) {
            is_cut_off_ = is_usual;
            return false;
        }
        if (!is_usual && end_at(body + size) < End::odd_name)
            return false;
        const auto flags = static_cast<std::uint16_t>(number(std::string_view(header).substr(8), 8));
        Id3v2Frame& frame = frames_.emplace_back(Id3v2Frame{id, flags, bytes_.part(body, size)});
        if (const std::string name = is_usual ? "" : name_of_v22(id); !name.empty())
            frame.stored_id = std::exchange(frame.id, name);
        position = body + size;
        return true;
    }

    const Sequence bytes_;
    unsigned version_;
    std::size_t padding_; ///< from here on there are only zeros
    std::size_t rest_ = 0;
    bool is_cut_off_ = false;
    std::vector<Id3v2Frame> frames_;
};

} // namespace vantaro::core::tags
