#include "vantaro/tags/mp4/mp4_data.h"

#include "vantaro/common/utf8.h"
#include "vantaro/tags/tag_store.h"

#include <id3v1genres.h>
#include <tstring.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace vantaro::core::tags {

namespace {

constexpr std::uint32_t implicit_type = 0;
constexpr std::uint32_t utf8_type = 1;
constexpr std::uint32_t utf16_type = 2;
constexpr std::uint32_t integer_type = 21;

constexpr std::string_view copyright_sign = "©";

struct Data {
    std::uint32_t type;
    std::string_view payload;
};

std::vector<Data> data_of(std::string_view body) {
    std::vector<Data> result;
    while (const std::optional<Mp4Child> child = take_atom(body))
        if (child->name == "data" && child->body.size() >= 8)
            result.push_back(
                {static_cast<std::uint32_t>(big_endian(child->body.substr(1, 3))), child->body.substr(8)});
    return result;
}

std::string data_atom(std::uint32_t type, std::string_view payload) {
    return make_atom("data", big_endian_bytes(type, 4) + std::string(4, '\0') + std::string(payload));
}

bool is_plain_text(std::string_view bytes) {
    return is_utf8(bytes) && std::ranges::all_of(bytes, [](char c) {
               return static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\r' || c == '\t';
           });
}

std::optional<std::string> text_of(const Data& data) {
    if (data.type == utf8_type)
        return utf8_or_latin1(data.payload);
    if (data.type == implicit_type && is_plain_text(data.payload))
        return std::string(data.payload);
    if (data.type != utf16_type)
        return std::nullopt;
    const Values strings = decode_strings(data.payload, TextEncoding::utf16be);
    return strings.empty() ? std::string() : strings[0];
}

std::optional<std::string> number_of(const Data& data) {
    if (data.type == utf8_type)
        return utf8_or_latin1(data.payload);
    if ((data.type != integer_type && data.type != implicit_type) || data.payload.empty()
        || data.payload.size() > 8)
        return std::nullopt;
    return std::to_string(big_endian(data.payload));
}

std::optional<std::string> genre_of(const Data& data) {
    const std::uint64_t number = big_endian(data.payload.substr(0, 2));
    if (number < 1 || number > 256)
        return std::nullopt;
    return from_taglib(TagLib::ID3v1::genre(static_cast<int>(number) - 1));
}

} // namespace

const Mp4Place& mp4_place(std::string_view name) {
    static constexpr Mp4Place text{};
    const auto found =
        std::ranges::find(mp4_atoms, name, [](const Mp4Place& row) { return row.names.place; });
    return found == mp4_atoms.end() ? text : *found;
}

std::string readable_name(std::string_view bytes) {
    return bytes.starts_with('\xA9') ? std::string(copyright_sign) + std::string(bytes.substr(1))
                                     : std::string(bytes);
}

std::string stored_name(std::string_view name) {
    return name.starts_with(copyright_sign) && name.size() > 4
               ? '\xA9' + std::string(name.substr(copyright_sign.size()))
               : std::string(name);
}

std::optional<FreeformName> freeform_name(std::string_view body) {
    const std::optional<Mp4Child> mean = take_atom(body);
    const std::optional<Mp4Child> name = take_atom(body);
    if (!mean || !name || mean->name != "mean" || name->name != "name" || mean->body.size() < 4
        || name->body.size() < 5)
        return std::nullopt;
    return FreeformName{clean_text(mean->body.substr(4)), clean_text(name->body.substr(4))};
}

std::optional<Values> mp4_values(Mp4Kind kind, std::string_view body) {
    Values values;
    for (const Data& data : data_of(body)) {
        const std::optional<std::string> value = kind == Mp4Kind::genre  ? genre_of(data)
                                                 : kind == Mp4Kind::text ? text_of(data)
                                                                         : number_of(data);
        if (!value)
            return std::nullopt;
        values.push_back(*value);
    }
    return values;
}

Mp4Pair mp4_pair(std::string_view body) {
    for (const Data& data : data_of(body))
        if (data.payload.size() >= 4) {
            const std::string_view total = data.payload.substr(4);
            return {static_cast<unsigned>(big_endian(data.payload.substr(2, 2))),
                    total.size() < 2 ? 0 : static_cast<unsigned>(big_endian(total.substr(0, 2)))};
        }
    return {};
}

std::string text_body(const Values& values) {
    std::string body;
    for (const std::string& value : values)
        body += data_atom(utf8_type, value);
    return body;
}

std::string freeform_body(const FreeformName& name, const Values& values) {
    const std::string flags(4, '\0');
    return make_atom("mean", flags + name.mean) + make_atom("name", flags + name.name) + text_body(values);
}

std::string pair_body(const Mp4Place& place, Mp4Pair pair) {
    std::string payload = big_endian_bytes(pair.number, 4) + big_endian_bytes(pair.total, 2);
    payload.resize(place.size);
    return data_atom(implicit_type, payload);
}

std::string number_body(const Mp4Place& place, const Values& values) {
    if (values.size() != 1)
        throw Refused("MP4 stores one number here");
    const std::uint64_t largest =
        place.kind == Mp4Kind::flag ? 1 : (std::uint64_t{1} << (8 * place.size - 1)) - 1;
    const unsigned number = checked_number(values[0], static_cast<unsigned>(largest));
    return data_atom(integer_type, big_endian_bytes(number, place.size));
}

unsigned checked_number(const std::string& text, unsigned largest) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || number > largest)
        throw Refused("MP4 stores a whole number up to " + std::to_string(largest) + " here");
    return number;
}

} // namespace vantaro::core::tags
