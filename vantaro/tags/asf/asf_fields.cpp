#include "vantaro/tags/asf/asf_fields.h"

#include "vantaro/tags/asf/asf_places.h"
#include "vantaro/tags/number_pair.h"

#include <asfattribute.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <set>
#include <utility>

namespace vantaro::core::tags {

namespace {

using TagLib::String;
using TagLib::ASF::Attribute;
using TagLib::ASF::Tag;

struct DescriptionPart {
    std::string_view place;
    String (Tag::*get)() const;
    void (Tag::*set)(const String&);
};
// In bytes, without the NUL at the end.
constexpr std::size_t largest_part = 0xFFFE - 2;
constexpr std::array<DescriptionPart, 4> description_parts{{
    {"Title", &Tag::title, &Tag::setTitle},
    {"Author", &Tag::artist, &Tag::setArtist},
    {"Description", &Tag::comment, &Tag::setComment},
    {"Copyright", &Tag::copyright, &Tag::setCopyright},
}};

const DescriptionPart* description_part(std::string_view place) {
    const auto found = std::ranges::find(description_parts, place, &DescriptionPart::place);
    return found == description_parts.end() ? nullptr : &*found;
}

std::optional<std::string> text_of(const Attribute& attribute) {
    switch (attribute.type()) {
    case Attribute::UnicodeType:
        return from_taglib(attribute.toString());
    case Attribute::BoolType:
        return attribute.toBool() ? "1" : "0";
    case Attribute::WordType:
        return std::to_string(attribute.toUShort());
    case Attribute::DWordType:
        return std::to_string(attribute.toUInt());
    case Attribute::QWordType:
        return std::to_string(attribute.toULongLong());
    default:
        return std::nullopt;
    }
}

template <class Number>
std::optional<Number> exact_number(const std::string& text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || std::to_string(number) != text)
        return std::nullopt;
    return number;
}

Attribute make_attribute(const std::string& value, Attribute::AttributeTypes type) {
    if (type == Attribute::BoolType && (value == "0" || value == "1"))
        return {value == "1"};
    if (type == Attribute::WordType)
        if (const auto number = exact_number<unsigned short>(value))
            return {*number};
    if (type == Attribute::DWordType)
        if (const auto number = exact_number<unsigned int>(value))
            return {*number};
    if (type == Attribute::QWordType)
        if (const auto number = exact_number<unsigned long long>(value))
            return {*number};
    return {to_taglib(value)};
}

bool is_technical(std::string_view place) {
    return std::ranges::find(asf_technical, place) != asf_technical.end();
}

} // namespace

std::string AsfFields::listed_name(const std::string& name) const {
    const FieldPlace* row = row_of_place(asf_places, name);
    return row == nullptr ? upper_name(name) : std::string(row->field);
}

Values AsfFields::values_of(const std::string& place) const {
    Values values;
    if (const DescriptionPart* part = description_part(place)) {
        const std::string text = from_taglib((tag_.*part->get)());
        if (!text.empty())
            values.push_back(text);
    }
    for (const Attribute& attribute : tag_.attribute(to_taglib(place)))
        if (std::optional<std::string> text = text_of(attribute))
            values.push_back(std::move(*text));
    return values;
}

std::vector<TrackField> AsfFields::fields() const {
    RankedFields result;
    const auto add = [&](const std::string& place) {
        const std::string name = listed_name(place);
        const std::size_t rank = rank_of_place(asf_places, place);
        const PairNames* names = find_pair(name);
        if (names != nullptr && names->number == name) {
            const NumberPair pair = split_pairs(values_of(place));
            result.add(name, rank, pair.numbers);
            result.add(std::string(names->total), rank, pair.totals);
        } else {
            result.add(name, rank, values_of(place));
        }
    };
    for (const DescriptionPart& part : description_parts)
        add(std::string(part.place));
    for (const auto& [key, attributes] : std::as_const(tag_).attributeListMap()) {
        const std::string place = from_taglib(key);
        if (!is_technical(place) && description_part(place) == nullptr)
            add(place);
    }
    return result.take();
}

void AsfFields::put(const std::string& place, const Values& values) {
    const TagLib::ASF::AttributeList old = tag_.attribute(to_taglib(place));
    auto type = place == "WM/IsCompilation" ? Attribute::BoolType : Attribute::UnicodeType;
    if (!old.isEmpty()) {
        type = old.front().type();
        if (!text_of(old.front()) && !values.empty())
            throw Refused("the file has an attribute of this name that is no text");
    }
    std::size_t first = 0;
    if (const DescriptionPart* part = description_part(place)) {
        // TagLib would write the last 16 bits of the size, and what follows could not be read any more.
        if (!values.empty() && to_taglib(values.front()).data(String::UTF16LE).size() > largest_part)
            throw Refused("the value is too long");
        (tag_.*part->set)(values.empty() ? String() : to_taglib(values.front()));
        first = 1;
    }
    tag_.removeItem(to_taglib(place));
    for (std::size_t i = first; i < values.size(); ++i)
        tag_.addAttribute(to_taglib(place), make_attribute(values[i], type));
}

void AsfFields::set(const std::string& given_name, const Values& values) {
    const std::string name = listed_name(given_name);
    if (is_technical(given_name)) {
        if (!values.empty())
            throw Refused("the name is reserved by the format");
        return;
    }
    const PairNames* names = find_pair(name);
    const FieldPlace* number_row = names == nullptr ? nullptr : row_of_field(asf_places, names->number);
    if (number_row != nullptr) {
        const std::string place(number_row->place);
        NumberPair pair = split_pairs(values_of(place));
        pair.half(*names, name) = values;
        put(place, join_pairs(pair));
    }
    // Other places that the file has. The map has the spelling.
    Values places;
    for (const auto& [key, attributes] : std::as_const(tag_).attributeListMap())
        if (listed_name(from_taglib(key)) == name
            && (number_row == nullptr || from_taglib(key) != number_row->place))
            places.push_back(from_taglib(key));
    const FieldPlace* row = row_of_field(asf_places, name);
    if (number_row == nullptr && row != nullptr && (places.empty() || description_part(row->place) != nullptr)
        && std::ranges::find(places, row->place) == places.end())
        places.emplace_back(row->place);
    if (number_row == nullptr && places.empty())
        places.push_back(given_name);
    // Places of one rank ("Title" and an attribute "TITLE") are read together: one of them has the values.
    std::set<std::size_t> written;
    std::partition(places.begin(), places.end(),
                   [](const std::string& place) { return description_part(place) != nullptr; });
    for (const std::string& place : places)
        put(place, written.insert(rank_of_place(asf_places, place)).second ? values : Values());
}

} // namespace vantaro::core::tags
