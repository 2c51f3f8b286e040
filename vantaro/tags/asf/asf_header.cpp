#include "vantaro/tags/asf/asf_header.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/stream_bytes.h"
#include "vantaro/tags/text.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace vantaro::core::tags {

namespace {

using namespace std::string_view_literals;
constexpr auto description_guid = "\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0\x00\xA0\xC9\x5E\xA8\x50"sv;
constexpr auto extension_guid = "\xB5\x03\xBF\x5F\x2E\xA9\xCF\x11\x8E\xE3\x00\xC0\x0C\x20\x53\x65"sv;
constexpr auto content_guid = "\x33\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv;
constexpr auto metadata_guid = "\xEA\xCB\xF8\xC5\xAF\x5B\x77\x48\x84\x67\xAA\x8C\x44\xFA\x4C\xCA"sv;
constexpr auto library_guid = "\x94\x1C\x23\x44\x98\x94\xD1\x49\xA1\x41\x1D\x13\x4E\x45\x70\x54"sv;
constexpr auto padding_guid = "\x74\xD4\x06\x18\xDF\xCA\x09\x45\xA4\xBA\x9A\xAB\xCB\x96\xAA\xE8"sv;
constexpr std::size_t file_header_size = 30;
constexpr std::size_t object_header_size = 24;

/// Takes bytes from the front; all of them when there are fewer.
std::string_view take(std::string_view& bytes, std::size_t size) {
    const std::string_view front = bytes.substr(0, size);
    bytes.remove_prefix(front.size());
    return front;
}

// UTF-16 with the low byte first and a NUL at the end.
std::string name_of(std::string_view bytes) {
    std::string marked = "\xFF\xFE";
    marked += bytes;
    const Values strings = decode_strings(marked, TextEncoding::utf16);
    return strings.empty() ? std::string() : strings[0];
}

std::map<std::string, std::size_t> count_values(std::string_view description) {
    std::map<std::string, std::size_t> counts;
    for (std::uint64_t left = little_endian(take(description, 2)); left > 0 && !description.empty(); --left) {
        ++counts[name_of(take(description, little_endian(take(description, 2))))];
        take(description, 2); // the type
        take(description, little_endian(take(description, 2)));
    }
    return counts;
}

// Collects the texts of a header object after object.
class LongTextFinder {
public:
    void find_in(std::string_view objects, bool within_extension) {
        while (objects.size() >= object_header_size) {
            const std::uint64_t size = little_endian(objects.substr(16, 8));
            if (size < object_header_size || size > objects.size())
                return;
            std::string_view object = take(objects, size);
            const std::string_view guid = take(object, 16);
            take(object, 8);
            if (guid == content_guid)
                find_in_content(object);
            else if (guid == description_guid)
                find_in_attributes(object, 0);
            else if (guid == metadata_guid || guid == library_guid)
                find_in_attributes(object, 4);
            else if (guid == extension_guid && !within_extension)
                find_in(object.substr(std::min<std::size_t>(22, object.size())), true);
        }
    }

    LongTexts take_texts() { return std::move(texts_); }

private:
    void find_in_content(std::string_view object) {
        std::string_view sizes = take(object, 10);
        for (const char* name : {"Title", "Author", "Copyright", "Description"})
            if (std::optional<std::u16string> text = text_of(take(object, little_endian(take(sizes, 2)))))
                texts_.description.push_back({name, 0, std::move(*text)});
    }

    /// `skipped` bytes stand in front of each; where there are any, the size of values has four bytes.
    void find_in_attributes(std::string_view object, std::size_t skipped) {
        for (std::uint64_t left = little_endian(take(object, 2)); left > 0 && !object.empty(); --left) {
            take(object, skipped);
            std::uint64_t name_size = little_endian(take(object, 2));
            std::string name;
            std::uint64_t type = 0;
            std::uint64_t size = 0;
            if (skipped == 0) {
                name = name_of(take(object, name_size));
                type = little_endian(take(object, 2));
                size = little_endian(take(object, 2));
            } else {
                type = little_endian(take(object, 2));
                size = little_endian(take(object, 4));
                name = name_of(take(object, name_size));
            }
            const std::string_view value = take(object, size);
            const std::size_t index = counts_[name]++;
            if (type != 0)
                continue;
            if (std::optional<std::u16string> text = text_of(value))
                texts_.attributes.push_back({name, index, std::move(*text)});
        }
    }

    // Without NULs at the end; nothing when there are no others.
    static std::optional<std::u16string> text_of(std::string_view bytes) {
        std::u16string text;
        for (; bytes.size() >= 2; bytes.remove_prefix(2))
            text += static_cast<char16_t>(little_endian(bytes.substr(0, 2)));
        text.resize(text.find_last_not_of(u'\0') + 1);
        return text.find(u'\0') == text.npos ? std::nullopt : std::optional(std::move(text));
    }

    LongTexts texts_;
    std::map<std::string, std::size_t> counts_;
};

} // namespace

LongTexts long_texts(TagLib::IOStream& stream) {
    const std::string header = read_some(stream, 0, asf_header_size(stream));
    LongTextFinder finder;
    finder.find_in(std::string_view(header).substr(std::min(file_header_size, header.size())), false);
    return finder.take_texts();
}

void check_asf(TagLib::IOStream& stream) {
    const std::uint64_t header_size = little_endian(read_some(stream, 16, 8));
    if (header_size < file_header_size || header_size > stream_size(stream))
        throw vantaro_io::exception_io_data();
    std::uint64_t position = file_header_size;
    for (std::uint64_t count = little_endian(read_some(stream, 24, 4)); count > 0; --count) {
        const std::uint64_t size = little_endian(read_some(stream, position + 16, 8));
        if (position > header_size || size < object_header_size || size > header_size - position)
            throw vantaro_io::exception_io_data();
        position += size;
    }
}

std::uint64_t asf_header_size(TagLib::IOStream& stream) {
    return little_endian(read_bytes(stream, 16, 8));
}

void pad_asf_header(TagLib::IOStream& stream, std::uint64_t room) {
    const std::string bytes = read_bytes(stream, 0, asf_header_size(stream));
    std::string_view header = bytes;
    const std::string_view head = take(header, file_header_size);
    std::string objects;
    std::uint32_t count = 0;
    for (std::uint64_t left = little_endian(head.substr(24, 4)); left > 0; --left) {
        if (header.size() < object_header_size)
            throw vantaro_io::exception_io_data();
        const std::uint64_t size = little_endian(header.substr(16, 8));
        if (size < object_header_size || size > header.size())
            throw vantaro_io::exception_io_data();
        const std::string_view object = take(header, size);
        if (object.starts_with(padding_guid))
            continue;
        objects += object;
        ++count;
    }
    const std::size_t needed = file_header_size + objects.size();
    const std::size_t padding = padded_size(needed, room, {.header = object_header_size}) - needed;
    if (padding > 0) {
        objects += padding_guid;
        objects += little_endian_bytes(padding, 8);
        objects.resize(objects.size() + padding - object_header_size);
        ++count;
    }
    std::string padded(head.substr(0, 16));
    padded += little_endian_bytes(needed + padding, 8);
    padded += little_endian_bytes(count, 4);
    padded += head.substr(28);
    padded += objects;
    replace_bytes(stream, 0, bytes.size(), padded);
}

std::map<std::string, std::size_t> values_behind_library(TagLib::IOStream& stream) {
    const std::uint64_t header_size = little_endian(read_some(stream, 16, 8));
    const std::uint64_t end = std::min<std::uint64_t>(header_size, stream_size(stream));
    bool library_first = false;
    for (std::uint64_t position = file_header_size; position + object_header_size <= end;) {
        const std::string header = read_some(stream, position, object_header_size);
        const std::uint64_t size = little_endian(std::string_view(header).substr(16));
        if (size < object_header_size || size > end - position)
            break;
        if (header.starts_with(extension_guid))
            library_first = true;
        else if (header.starts_with(description_guid) && library_first)
            return count_values(read_some(stream, position + object_header_size, size - object_header_size));
        position += size;
    }
    return {};
}

} // namespace vantaro::core::tags
