#include "vantaro/tags/xiph/xiph_fields.h"

#include "host/api/exceptions.h"
#include "vantaro/common/utf8.h"
#include "vantaro/tags/number_pair.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/xiph/xiph_places.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

std::uint32_t take_number(std::string_view& bytes) {
    if (bytes.size() < 4)
        throw vantaro_io::exception_io_data("The Vorbis comment is longer than what holds it");
    const auto result = static_cast<std::uint32_t>(little_endian(bytes.substr(0, 4)));
    bytes.remove_prefix(4);
    return result;
}

std::string take_counted(std::string_view& bytes) {
    const std::size_t size = take_number(bytes);
    if (size > bytes.size())
        throw vantaro_io::exception_io_data("The Vorbis comment is longer than what holds it");
    std::string result(bytes.substr(0, size));
    bytes.remove_prefix(size);
    return result;
}

void append_counted(std::string& bytes, std::string_view text) {
    bytes += little_endian_bytes(text.size(), 4);
    bytes += text;
}

bool is_picture(std::string_view name) {
    return equal_field_names(name, "METADATA_BLOCK_PICTURE") || equal_field_names(name, "COVERART")
           || equal_field_names(name, "COVERARTMIME");
}

void check_name(std::string_view name) {
    if (name.empty() || !std::ranges::all_of(name, [](char c) { return c >= 0x20 && c <= 0x7D && c != '='; }))
        throw Refused("the name of a Vorbis comment consists of ASCII characters without = and ~");
    if (is_picture(name))
        throw Refused("the name is reserved for pictures");
}

} // namespace

XiphFields::XiphFields(std::string_view bytes) {
    vendor_ = take_counted(bytes);
    for (std::uint32_t count = take_number(bytes); count > 0; --count) {
        std::string comment = take_counted(bytes);
        const std::size_t sign = comment.find('=');
        // Without a sign there is no name; the text stays in the file as it is.
        if (sign == std::string::npos)
            comments_.push_back({"", std::move(comment), false});
        else
            comments_.push_back({comment.substr(0, sign), comment.substr(sign + 1)});
    }
    rest_ = bytes;
}

bool XiphFields::remove_padding(std::string_view mark) {
    if (!rest_.starts_with(mark) || rest_.find_first_not_of('\0', mark.size()) != std::string::npos)
        return false;
    rest_.resize(mark.size());
    return true;
}

std::string XiphFields::render() const {
    std::string result;
    append_counted(result, vendor_);
    for (unsigned i = 0; i < 4; ++i)
        result += static_cast<char>(comments_.size() >> (8 * i) & 0xFF);
    for (const Comment& comment : comments_)
        append_counted(result, comment.has_sign ? comment.name + "=" + comment.value : comment.value);
    return result + rest_;
}

bool XiphFields::has(std::string_view name) const {
    return std::ranges::any_of(comments_,
                               [&](const Comment& comment) { return equal_field_names(comment.name, name); });
}

std::string XiphFields::listed_name(const std::string& name) const {
    return field_of_place(xiph_places, name, [this](std::string_view place) { return has(place); });
}

std::vector<TrackField> XiphFields::fields() const {
    RankedFields result(true);
    for (const Comment& comment : comments_) {
        if (comment.name.empty() || is_picture(comment.name) || !is_utf8(comment.name))
            continue;
        const std::string name = listed_name(comment.name);
        const std::size_t rank = rank_of_place(xiph_places, comment.name);
        const std::string value = clean_text(comment.value);
        const PairNames* names = find_pair(name);
        if (names != nullptr && names->number == name && value.find('/') != std::string::npos) {
            const NumberPair pair = split_pairs({value});
            result.add(name, rank, pair.numbers);
            // A comment of its own says it better.
            result.add(std::string(names->total), xiph_places.size(), pair.totals);
        } else {
            result.add(name, rank, {value});
        }
    }
    return result.take();
}

void XiphFields::set(const std::string& given_name, const Values& values) {
    const std::string name = listed_name(given_name);
    if (!values.empty())
        check_name(name);
    if (find_pair(name) != nullptr)
        split_pair(name);
    replace(name, values);
}

void XiphFields::split_pair(const std::string& name) {
    const PairNames& names = *find_pair(name);
    if (std::ranges::none_of(comments_, [&](const Comment& comment) {
            return listed_name(comment.name) == names.number && comment.value.find('/') != std::string::npos;
        }))
        return;
    const std::vector<TrackField> fields = this->fields();
    for (const std::string_view half : {names.number, names.total}) {
        const Values* values = find_values(fields, half);
        replace(std::string(half), values == nullptr ? Values() : *values);
    }
}

void XiphFields::replace(const std::string& field, const Values& values) {
    std::vector<Comment> comments;
    Values done; // spellings
    for (Comment& comment : comments_) {
        if (comment.name.empty() || is_picture(comment.name) || listed_name(comment.name) != field) {
            comments.push_back(comment);
            continue;
        }
        const std::string spelling = upper_name(comment.name);
        if (std::ranges::find(done, spelling) == done.end())
            for (const std::string& value : values)
                comments.push_back({comment.name, value});
        done.push_back(spelling);
    }
    if (done.empty()) {
        const FieldPlace* row = row_of_field(xiph_places, field);
        for (const std::string& value : values)
            comments.push_back({row == nullptr ? field : std::string(row->place), value});
    }
    comments_ = std::move(comments);
}

} // namespace vantaro::core::tags
