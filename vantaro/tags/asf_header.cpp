#include "vantaro/tags/asf_header.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/stream_bytes.h"
#include "vantaro/tags/text.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace vantaro::core::tags {

namespace {

using namespace std::string_view_literals;
constexpr auto description_guid = "\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0\x00\xA0\xC9\x5E\xA8\x50"sv;
constexpr auto extension_guid = "\xB5\x03\xBF\x5F\x2E\xA9\xCF\x11\x8E\xE3\x00\xC0\x0C\x20\x53\x65"sv;
constexpr auto padding_guid = "\x74\xD4\x06\x18\xDF\xCA\x09\x45\xA4\xBA\x9A\xAB\xCB\x96\xAA\xE8"sv;
constexpr std::size_t file_header_size = 30;
constexpr std::size_t object_header_size = 24;

std::uint64_t little_endian(std::string_view bytes) {
    std::uint64_t result = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        result = result << 8 | static_cast<unsigned char>(bytes[i]);
    return result;
}

std::string little_endian_bytes(std::uint64_t value, std::size_t size) {
    std::string result;
    for (std::size_t i = 0; i < size; ++i)
        result += static_cast<char>(value >> (8 * i) & 0xFF);
    return result;
}

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

} // namespace

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
