#include "vantaro/tags/id3v2/id3v1_fields.h"

#include <id3v1genres.h>
#include <tstring.h>

#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace vantaro::core::tags {

namespace {

struct Slot {
    std::string_view field;
    std::size_t position;
    std::size_t size;
};

constexpr std::array<Slot, 5> slots{{
    {"TITLE", 3, 30},
    {"ARTIST", 33, 30},
    {"ALBUM", 63, 30},
    {"DATE", 93, 4},
    {"COMMENT", 97, 30},
}};
constexpr std::size_t track_mark = 125;
constexpr std::size_t track_position = 126;
constexpr std::size_t genre_position = 127;

std::string approximate_latin1(const std::string& utf8) {
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(utf8);
    std::string result;
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1))
        result += text.char32At(i) <= 0xFF ? static_cast<char>(text.char32At(i)) : '?';
    return result;
}

} // namespace

std::string Id3v1Fields::text(std::size_t position, std::size_t size) const {
    std::string_view part = std::string_view(bytes_).substr(position, size);
    part = part.substr(0, part.find('\0'));
    const std::size_t end = part.find_last_not_of(' ');
    return from_latin1(part.substr(0, end == part.npos ? 0 : end + 1));
}

void Id3v1Fields::put(std::size_t position, std::size_t size, const std::string& text) {
    std::string bytes = approximate_latin1(text);
    bytes.resize(size);
    bytes_.replace(position, size, bytes);
}

std::vector<TrackField> Id3v1Fields::fields() const {
    RankedFields result;
    for (const Slot& slot : slots) {
        const bool shortened = slot.field == "COMMENT" && has_track();
        result.add(std::string(slot.field), 0, {text(slot.position, shortened ? 28 : slot.size)});
    }
    if (has_track())
        result.add("TRACKNUMBER", 0, {std::to_string(static_cast<unsigned char>(bytes_[track_position]))});
    const auto genre = static_cast<unsigned char>(bytes_[genre_position]);
    result.add("GENRE", 0, {from_taglib(TagLib::ID3v1::genre(genre))});
    return result.take();
}

void Id3v1Fields::set(const std::string& given_name, const Values& values) {
    const std::string name = upper_name(given_name);
    const std::string value = values.empty() ? "" : values.front();
    if (name == "TRACKNUMBER") {
        unsigned char track = 0;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), track);
        if (error != std::errc() || end != value.data() + value.size())
            track = 0;
        if (track != 0 || has_track()) {
            bytes_[track_mark] = 0;
            bytes_[track_position] = static_cast<char>(track);
        }
        return;
    }
    if (name == "GENRE") {
        bytes_[genre_position] = static_cast<char>(TagLib::ID3v1::genreIndex(to_taglib(value)));
        return;
    }
    for (const Slot& slot : slots)
        if (slot.field == name) {
            const bool year = name == "DATE";
            const bool is_year =
                value.size() >= 4
                && std::all_of(value.begin(), value.begin() + 4, [](char c) { return c >= '0' && c <= '9'; });
            const std::size_t size = name == "COMMENT" && has_track() ? 28 : slot.size;
            put(slot.position, size, year && !is_year ? "" : value);
        }
}

} // namespace vantaro::core::tags
