#include "vantaro/tags/asf/asf_header.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/padding.h"
#include "vantaro/tags/text.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

using namespace std::string_view_literals;

constexpr auto header_guid = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv;
/// Of a header extension.
constexpr auto reserved_guid = "\x11\xD2\xD3\xAB\xBA\xA9\xCF\x11\x8E\xE6\x00\xC0\x0C\x20\x53\x65"sv;

struct KindRow {
    AsfKind kind;
    bool in_extension;
    std::string_view guid;
};
constexpr auto kinds = std::to_array<KindRow>({
    {AsfKind::padding, false, "\x74\xD4\x06\x18\xDF\xCA\x09\x45\xA4\xBA\x9A\xAB\xCB\x96\xAA\xE8"sv},
    {AsfKind::file_properties, false, "\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11\x8E\xE4\x00\xC0\x0C\x20\x53\x65"sv},
    {AsfKind::stream_properties, false, "\x91\x07\xDC\xB7\xB7\xA9\xCF\x11\x8E\xE6\x00\xC0\x0C\x20\x53\x65"sv},
    {AsfKind::codec_list, false, "\x40\x52\xD1\x86\x1D\x31\xD0\x11\xA3\xA4\x00\xA0\xC9\x03\x48\xF6"sv},
    {AsfKind::content_description, false,
     "\x33\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv},
    {AsfKind::extended_description, false,
     "\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0\x00\xA0\xC9\x5E\xA8\x50"sv},
    {AsfKind::header_extension, false, "\xB5\x03\xBF\x5F\x2E\xA9\xCF\x11\x8E\xE3\x00\xC0\x0C\x20\x53\x65"sv},
    {AsfKind::metadata, true, "\xEA\xCB\xF8\xC5\xAF\x5B\x77\x48\x84\x67\xAA\x8C\x44\xFA\x4C\xCA"sv},
    {AsfKind::metadata_library, true, "\x94\x1C\x23\x44\x98\x94\xD1\x49\xA1\x41\x1D\x13\x4E\x45\x70\x54"sv},
});

constexpr std::size_t file_header_size = 30;
constexpr std::size_t object_header_size = 24;
constexpr std::size_t extension_header_size = object_header_size + 22;
constexpr std::size_t file_size_at = object_header_size + 16; ///< in the file properties
/// Far above what files have, and below what makes somebody wait.
constexpr std::size_t largest_header = 0x0FFFFFFF;
constexpr std::size_t most_objects = 4096;
constexpr std::size_t most_attributes = 0xFFFF;

AsfKind kind_of(std::string_view guid, bool in_extension) {
    for (const KindRow& row : kinds)
        if (row.guid == guid && row.in_extension == in_extension)
            return row.kind;
    return AsfKind::other;
}

std::string_view guid_of(AsfKind kind) {
    return std::ranges::find(kinds, kind, &KindRow::kind)->guid;
}

/// Takes piece after piece of what holds them.
class Pieces {
public:
    Pieces(FileBytes& file, std::size_t start, std::size_t end) : file_(file), position_(start), end_(end) {}

    std::size_t left() const { return end_ - position_; }
    std::size_t position() const { return position_; }
    Part part(std::size_t size) {
        if (size > left())
            throw vantaro_io::exception_io_data(
                "The ASF header has an attribute that is larger than its list");
        position_ += size;
        return {file_, position_ - size, size};
    }
    std::string_view bytes(std::size_t size) { return part(size).bytes(); }
    Part rest() { return part(left()); }

private:
    FileBytes& file_;
    std::size_t position_;
    std::size_t end_;
};

std::size_t number(std::string_view bytes, std::size_t at, std::size_t size) {
    return little_endian(bytes.substr(at, size));
}

class HeaderReader {
public:
    HeaderReader(FileBytes& file, AsfHeader& header) : file_(file), header_(header) {}

    void read() {
        const std::string_view head = file_.some(header_.start, file_header_size);
        if (head.size() < file_header_size || !head.starts_with(header_guid))
            throw vantaro_io::exception_io_data("The file is called ASF, but has no header of one");
        header_.size = number(head, 16, 8);
        if (header_.size > file_.size() - header_.start)
            throw vantaro_io::exception_io_data("The ASF header is larger than the file");
        if (header_.size < file_header_size || header_.size > largest_header)
            throw vantaro_io::exception_io_data("The ASF header has a size that no header can have");
        file_.note_tag(header_.start, header_.size);
        Pieces pieces(file_, header_.start + file_header_size, header_.start + header_.size);
        for (std::size_t count = number(head, 24, 4); count > 0; --count) {
            if (pieces.left() < object_header_size)
                throw vantaro_io::exception_io_data("The ASF header has fewer objects than it says");
            header_.objects.push_back(read_object(pieces, false));
        }
        header_.rest = pieces.rest();
    }

private:
    AsfObject read_object(Pieces& pieces, bool in_extension) {
        if (++objects_ > most_objects)
            throw vantaro_io::exception_io_data("The ASF header has more objects than any file needs");
        const std::size_t start = pieces.position();
        const std::string_view head = file_.bytes(start, object_header_size);
        const std::size_t size = number(head, 16, 8);
        if (size < object_header_size)
            throw vantaro_io::exception_io_data(
                "The ASF header has an object that is smaller than its own head");
        if (size > pieces.left())
            throw vantaro_io::exception_io_data(
                "The ASF header has an object that is larger than what holds it");
        AsfObject object{kind_of(head.substr(0, 16), in_extension), pieces.part(size)};
        Pieces content(file_, start + object_header_size, start + size);
        if (object.kind == AsfKind::header_extension)
            read_extension(object, content);
        else if (object.kind == AsfKind::content_description)
            read_content(object, content);
        else if (object.kind == AsfKind::extended_description)
            read_extended(object, content);
        else if (in_extension && object.kind != AsfKind::other)
            read_metadata(object, content);
        return object;
    }

    void read_extension(AsfObject& object, Pieces& content) {
        if (has_extension_) {
            object.kind = AsfKind::other;
            return;
        }
        has_extension_ = true;
        if (content.left() < extension_header_size - object_header_size
            || number(content.bytes(22), 18, 4) != content.left())
            throw vantaro_io::exception_io_data("The ASF header extension has another size than its object");
        while (content.left() >= object_header_size)
            header_.extension.push_back(read_object(content, true));
        object.rest = content.rest();
    }

    void read_content(AsfObject& object, Pieces& content) {
        const std::string_view sizes = content.bytes(2 * asf_content_names.size());
        for (std::size_t i = 0; i < asf_content_names.size(); ++i) {
            AsfAttribute& text = object.attributes.emplace_back();
            text.name = asf_content_names[i];
            text.value = content.part(number(sizes, 2 * i, 2));
        }
        object.rest = content.rest();
    }

    void read_extended(AsfObject& object, Pieces& content) {
        for (std::size_t count = read_count(content); count > 0; --count) {
            AsfAttribute& attribute = object.attributes.emplace_back();
            take_name(attribute, content.part(number(content.bytes(2), 0, 2)));
            const std::string_view head = content.bytes(4);
            attribute.type = static_cast<AsfType>(number(head, 0, 2));
            attribute.value = content.part(number(head, 2, 2));
        }
        object.rest = content.rest();
    }

    void read_metadata(AsfObject& object, Pieces& content) {
        for (std::size_t count = read_count(content); count > 0; --count) {
            AsfAttribute& attribute = object.attributes.emplace_back();
            const std::string_view head = content.bytes(12);
            attribute.language = static_cast<unsigned>(number(head, 0, 2));
            attribute.stream = static_cast<unsigned>(number(head, 2, 2));
            attribute.type = static_cast<AsfType>(number(head, 6, 2));
            take_name(attribute, content.part(number(head, 4, 2)));
            attribute.value = content.part(number(head, 8, 4));
        }
        object.rest = content.rest();
    }

    std::size_t read_count(Pieces& content) {
        const std::size_t count = number(content.bytes(2), 0, 2);
        attributes_ += count;
        if (attributes_ > most_attributes)
            throw vantaro_io::exception_io_data("The ASF header has more attributes than any file needs");
        return count;
    }

    static void take_name(AsfAttribute& attribute, Part name) {
        attribute.name = from_asf_text(name.bytes());
        attribute.stored_name = std::move(name);
    }

    FileBytes& file_;
    AsfHeader& header_;
    std::size_t objects_ = 0;
    std::size_t attributes_ = 0;
    bool has_extension_ = false;
};

std::size_t size_of(const std::vector<Part>& parts) {
    std::size_t size = 0;
    for (const Part& part : parts)
        size += part.size();
    return size;
}

void append_object(std::vector<Part>& parts, AsfKind kind, const std::vector<Part>& content) {
    parts.emplace_back(std::string(guid_of(kind))
                       + little_endian_bytes(object_header_size + size_of(content), 8));
    parts.insert(parts.end(), content.begin(), content.end());
}

std::vector<Part> render_attributes(const AsfObject& object) {
    const std::vector<AsfAttribute>& attributes = object.attributes;
    const auto word = [](std::size_t value) { return little_endian_bytes(value, 2); };
    std::vector<Part> parts(1);
    std::string head;
    if (object.kind != AsfKind::content_description)
        head = word(attributes.size());
    else
        for (const AsfAttribute& text : attributes)
            head += word(text.value.size());
    parts.front() = Part(std::move(head));
    for (const AsfAttribute& attribute : attributes) {
        const std::size_t name_size = attribute.stored_name.size();
        const std::string type = word(static_cast<std::uint16_t>(attribute.type));
        if (object.kind == AsfKind::extended_description) {
            parts.emplace_back(word(name_size));
            parts.push_back(attribute.stored_name);
            parts.emplace_back(type + word(attribute.value.size()));
        } else if (object.kind != AsfKind::content_description) {
            parts.emplace_back(word(attribute.language) + word(attribute.stream) + word(name_size) + type
                               + little_endian_bytes(attribute.value.size(), 4));
            parts.push_back(attribute.stored_name);
        }
        parts.push_back(attribute.value);
    }
    parts.push_back(object.rest);
    return parts;
}

std::vector<Part> render_extension(const AsfHeader& header, const AsfObject& object) {
    std::vector<Part> inner;
    for (const AsfObject& child : header.extension)
        if (child.is_edited)
            append_object(inner, child.kind, render_attributes(child));
        else
            inner.push_back(child.bytes);
    inner.push_back(object.rest);
    const std::string reserved =
        object.bytes.size() == 0
            ? std::string(reserved_guid) + little_endian_bytes(6, 2)
            : std::string(object.bytes.head(extension_header_size).substr(object_header_size, 18));
    inner.insert(inner.begin(), Part(reserved + little_endian_bytes(size_of(inner), 4)));
    return inner;
}

/// The file properties with `size` in place of the file's own size; as they are where they say another one.
Part with_file_size(const Part& properties, std::size_t old_size, std::size_t size) {
    if (properties.size() < file_size_at + 8
        || number(properties.head(file_size_at + 8), file_size_at, 8) != old_size)
        return properties;
    return {std::string(properties.bytes()).replace(file_size_at, 8, little_endian_bytes(size, 8))};
}

} // namespace

std::string from_asf_text(std::string_view bytes) {
    std::string marked = "\xFF\xFE"; // the low byte first
    marked += bytes;
    const Values strings = decode_strings(marked, TextEncoding::utf16);
    return strings.empty() ? std::string() : strings.front();
}

std::string to_asf_text(const std::string& utf8) {
    return encode_strings({utf8}, TextEncoding::utf16).substr(2) + std::string(2, '\0');
}

AsfHeader read_asf_header(FileBytes& file, std::size_t start) {
    AsfHeader header{start};
    HeaderReader(file, header).read();
    return header;
}

void write_asf_header(const AsfHeader& header, FileBytes& file, Rewriting& rewriting) {
    std::size_t attributes = 0;
    for (const AsfObject* list : attribute_lists(header))
        attributes += list->attributes.size();
    std::vector<Part> parts(1); // the header's own beginning
    std::size_t count = 0;
    std::size_t properties = 0;
    for (const AsfObject& object : header.objects) {
        if (object.kind == AsfKind::padding)
            continue;
        ++count;
        if (object.is_edited && object.kind == AsfKind::header_extension)
            append_object(parts, object.kind, render_extension(header, object));
        else if (object.is_edited)
            append_object(parts, object.kind, render_attributes(object));
        else
            parts.push_back(object.bytes);
        if (object.kind == AsfKind::file_properties)
            properties = parts.size() - 1;
    }
    const std::size_t needed = file_header_size + size_of(parts) + header.rest.size();
    const std::size_t size = padded_size(needed, header.size, {.header = object_header_size});
    if (size > largest_header || count + header.extension.size() >= most_objects
        || attributes > most_attributes)
        throw vantaro_io::exception_io("The tags are larger than an ASF file can hold");
    if (size > needed) {
        append_object(parts, AsfKind::padding, {Part(std::string(size - needed - object_header_size, '\0'))});
        ++count;
    }
    parts.push_back(header.rest);
    if (properties != 0)
        parts[properties] = with_file_size(parts[properties], file.size(), file.size() - header.size + size);
    const std::string_view head = file.bytes(header.start, file_header_size);
    parts.front() = Part(std::string(head.substr(0, 16)) + little_endian_bytes(size, 8)
                         + little_endian_bytes(count, 4) + std::string(head.substr(28)));
    rewriting.replace(header.start, header.size, parts);
}

} // namespace vantaro::core::tags
