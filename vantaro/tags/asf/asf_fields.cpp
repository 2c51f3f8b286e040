#include "vantaro/tags/asf/asf_fields.h"

#include "vantaro/tags/asf/asf_places.h"
#include "vantaro/tags/number_pair.h"
#include "vantaro/tags/numbers.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace vantaro::core::tags {

namespace {

bool stands_in_content(std::string_view place) {
    return !place.empty() && std::ranges::find(asf_content_names, place) != asf_content_names.end();
}

bool is_technical(std::string_view place) {
    return std::ranges::find(asf_technical, place) != asf_technical.end();
}

/// In bytes; 0 for what is no number. The extended description has larger Booleans than the others.
std::size_t size_of_number(AsfType type, bool is_extended) {
    switch (type) {
    case AsfType::boolean:
        return is_extended ? 4 : 2;
    case AsfType::word:
        return 2;
    case AsfType::dword:
        return 4;
    case AsfType::qword:
        return 8;
    default:
        return 0;
    }
}

bool is_text(const AsfAttribute& attribute, bool is_extended) {
    const std::size_t size = size_of_number(attribute.type, is_extended);
    return attribute.type == AsfType::text || (size != 0 && attribute.value.size() == size);
}

/// Requires: is_text.
std::string text_of(const AsfAttribute& attribute) {
    const std::string_view bytes = attribute.value.bytes();
    if (attribute.type == AsfType::text)
        return from_asf_text(bytes);
    const std::uint64_t number = little_endian(bytes);
    return std::to_string(attribute.type == AsfType::boolean ? std::uint64_t{number != 0} : number);
}

/// Nothing when the value's text would be another one.
std::optional<std::string> number_bytes(const std::string& text, AsfType type, bool is_extended) {
    const std::size_t size = size_of_number(type, is_extended);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (size == 0 || error != std::errc() || std::to_string(number) != text
        || (type == AsfType::boolean && number > 1))
        return std::nullopt;
    std::string bytes = little_endian_bytes(number, size);
    return little_endian(bytes) == number ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace

std::string AsfFields::listed_name(const std::string& name) const {
    const FieldPlace* row = row_of_place(asf_places, name);
    return row == nullptr ? upper_name(name) : std::string(row->field);
}

Values AsfFields::values_of(const std::string& place) const {
    Values values;
    for (const AsfObject* list : attribute_lists(header_))
        for (const AsfAttribute& attribute : list->attributes)
            if (attribute.name == place && is_text(attribute, list->kind == AsfKind::extended_description))
                values.push_back(text_of(attribute));
    return values;
}

std::vector<TrackField> AsfFields::fields() const {
    std::map<std::string, Values> texts;
    for (const AsfObject* list : attribute_lists(header_))
        for (const AsfAttribute& attribute : list->attributes)
            if (!attribute.name.empty() && !is_technical(attribute.name)
                && is_text(attribute, list->kind == AsfKind::extended_description))
                texts[attribute.name].push_back(text_of(attribute));
    RankedFields result;
    const auto add = [&](const std::string& place, const Values& values) {
        const std::string name = listed_name(place);
        const std::size_t rank = rank_of_place(asf_places, place);
        const PairNames* names = find_pair(name);
        if (names != nullptr && names->number == name) {
            const NumberPair pair = split_pairs(values);
            result.add(name, rank, pair.numbers);
            result.add(std::string(names->total), rank, pair.totals);
        } else {
            result.add(name, rank, values);
        }
    };
    for (const std::string_view name : asf_content_names)
        if (const auto content = texts.extract(std::string(name)); !content.empty())
            add(content.key(), content.mapped());
    for (const auto& [place, values] : texts)
        add(place, values);
    return result.take();
}

/// The first list of this kind, added where there is none.
AsfObject& AsfFields::edited(AsfKind kind) {
    const bool in_extension = kind == AsfKind::metadata_library;
    if (in_extension)
        edited(AsfKind::header_extension);
    std::vector<AsfObject>& objects = in_extension ? header_.extension : header_.objects;
    auto found = std::ranges::find(objects, kind, &AsfObject::kind);
    if (found == objects.end()) {
        found = objects.insert(found, {kind, {}});
        if (kind == AsfKind::content_description)
            for (const std::string_view name : asf_content_names)
                found->attributes.push_back({.name = std::string(name)});
    }
    found->is_edited = true;
    return *found;
}

/// Removes what put() replaces, and returns what is no part of a content description.
std::vector<AsfAttribute> AsfFields::take_texts(const std::string& place) {
    std::vector<AsfAttribute> taken;
    for (AsfObject* list : attribute_lists(header_)) {
        const bool is_extended = list->kind == AsfKind::extended_description;
        const auto is_old = [&](const AsfAttribute& attribute) {
            return attribute.name == place && is_text(attribute, is_extended);
        };
        if (std::ranges::none_of(list->attributes, is_old))
            continue;
        list->is_edited = true;
        if (list->kind == AsfKind::content_description) {
            std::ranges::find_if(list->attributes, is_old)->value = {};
            continue;
        }
        if (!is_extended)
            edited(AsfKind::header_extension);
        std::ranges::copy_if(list->attributes, std::back_inserter(taken), is_old);
        std::erase_if(list->attributes, is_old);
    }
    return taken;
}

void AsfFields::add(AsfAttribute attribute, const std::string& value, bool is_first) {
    const auto is_same = [&](const AsfAttribute& other) { return other.name == attribute.name; };
    const auto fits = [&] {
        const auto list = std::ranges::find(header_.objects, AsfKind::extended_description, &AsfObject::kind);
        return list == header_.objects.end() || std::ranges::none_of(list->attributes, is_same);
    };
    const bool is_extended = is_first && attribute.language == 0 && attribute.stream == 0
                             && to_asf_text(value).size() <= asf_short_size && fits();
    const std::optional<std::string> number = number_bytes(value, attribute.type, is_extended);
    if (!number)
        attribute.type = AsfType::text;
    attribute.value = Part(number ? *number : to_asf_text(value));
    edited(is_extended ? AsfKind::extended_description : AsfKind::metadata_library)
        .attributes.push_back(std::move(attribute));
}

void AsfFields::put(const std::string& place, const Values& values) {
    const bool in_content = stands_in_content(place);
    if (!values.empty() && in_content && to_asf_text(values.front()).size() > asf_short_size)
        throw Refused("the value is too long");
    AsfAttribute attribute{.name = place, .stored_name = Part(to_asf_text(place))};
    if (!values.empty() && attribute.stored_name.size() > asf_short_size)
        throw Refused("the name is too long");
    const std::vector<AsfAttribute> old = take_texts(place);
    attribute.type = !old.empty()                  ? old.front().type
                     : place == "WM/IsCompilation" ? AsfType::boolean
                                                   : AsfType::text;
    if (in_content && !values.empty())
        std::ranges::find(edited(AsfKind::content_description).attributes, place, &AsfAttribute::name)
            ->value = Part(to_asf_text(values.front()));
    for (std::size_t i = in_content ? 1 : 0; i < values.size(); ++i) {
        const std::size_t index = in_content ? i - 1 : i;
        attribute.language = index < old.size() ? old[index].language : 0;
        attribute.stream = index < old.size() ? old[index].stream : 0;
        add(attribute, values[i], index == 0);
    }
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
    // Other places that the file has, each in its spelling.
    Values places;
    for (const AsfObject* list : attribute_lists(header_))
        for (const AsfAttribute& attribute : list->attributes)
            if (list->kind != AsfKind::content_description && !is_technical(attribute.name)
                && listed_name(attribute.name) == name
                && (number_row == nullptr || attribute.name != number_row->place)
                && std::ranges::find(places, attribute.name) == places.end())
                places.push_back(attribute.name);
    const FieldPlace* row = row_of_field(asf_places, name);
    if (number_row == nullptr && row != nullptr && (places.empty() || stands_in_content(row->place))
        && std::ranges::find(places, row->place) == places.end())
        places.emplace_back(row->place);
    if (number_row == nullptr && places.empty())
        places.push_back(given_name);
    // Places of one rank ("Title" and an attribute "TITLE") are read together: one of them has the values.
    std::set<std::size_t> written;
    std::stable_partition(places.begin(), places.end(), stands_in_content);
    for (const std::string& place : places)
        put(place, written.insert(rank_of_place(asf_places, place)).second ? values : Values());
}

} // namespace vantaro::core::tags
