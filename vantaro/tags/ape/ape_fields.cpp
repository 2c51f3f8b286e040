#include "vantaro/tags/ape/ape_fields.h"

#include "vantaro/tags/ape/ape_places.h"
#include "vantaro/tags/number_pair.h"
#include "vantaro/tags/numbers.h"

#include <apetag.h>

#include <algorithm>
#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr std::string_view mark = "APETAGEX";
constexpr std::size_t item_header_size = 8;
constexpr std::uint32_t version = 2000;
constexpr std::uint32_t has_header = 0x80000000;
constexpr std::uint32_t is_header = 0x20000000;
constexpr std::uint32_t type_of_item = 6;

void check_key(const std::string& key) {
    if (!TagLib::APE::Tag::checkKey(to_taglib(key)) || key.size() < 2 || key.size() > 255)
        throw Refused(
            "the key of an APE item has 2 to 255 ASCII characters and is not ID3, TAG, OggS or MP+");
}

/// The one at the beginning of the bytes.
std::uint32_t number(std::string_view bytes) {
    return static_cast<std::uint32_t>(little_endian(bytes.substr(0, 4)));
}

std::string number_bytes(std::size_t value) {
    return little_endian_bytes(value, 4);
}

bool is_text(std::uint32_t flags) {
    return (flags & type_of_item) == 0;
}

} // namespace

ApeFields::ApeFields(std::string_view bytes) {
    std::uint32_t count = number(bytes.substr(bytes.size() - 16));
    bytes.remove_suffix(ape_footer_size);
    if (bytes.starts_with(mark) && bytes.size() >= ape_footer_size)
        bytes.remove_prefix(ape_footer_size);
    for (; count > 0 && bytes.size() > item_header_size; --count) {
        const std::size_t size = number(bytes);
        const std::size_t key_end = bytes.find('\0', item_header_size);
        if (key_end == bytes.npos || size > bytes.size() - key_end - 1)
            break;
        items_.push_back({number(bytes.substr(4)),
                          std::string(bytes.substr(item_header_size, key_end - item_header_size)),
                          std::string(bytes.substr(key_end + 1, size))});
        bytes.remove_prefix(key_end + 1 + size);
    }
    rest_ = bytes;
    rest_count_ = rest_.empty() ? 0 : count;
}

std::string ApeFields::render() const {
    std::string items;
    for (const Item& item : items_)
        items += number_bytes(item.value.size()) + number_bytes(item.flags) + item.key + '\0' + item.value;
    items += rest_;
    const auto frame = [&](std::uint32_t flags) {
        return std::string(mark) + number_bytes(version) + number_bytes(items.size() + ape_footer_size)
               + number_bytes(items_.size() + rest_count_) + number_bytes(has_header | flags)
               + std::string(8, '\0');
    };
    return frame(is_header) + items + frame(0);
}

const ApeFields::Item* ApeFields::find(std::string_view key) const {
    const auto found = std::find_if(items_.rbegin(), items_.rend(),
                                    [&](const Item& item) { return equal_field_names(item.key, key); });
    return found == items_.rend() ? nullptr : &*found;
}

std::string ApeFields::listed_name(const std::string& name) const {
    const FieldPlace* row = row_of_place(ape_places, name);
    return row == nullptr ? upper_name(name) : std::string(row->field);
}

Values ApeFields::values_of(std::string_view key) const {
    const Item* item = find(key);
    if (item == nullptr || !is_text(item->flags))
        return {};
    return decode_strings(item->value, TextEncoding::utf8);
}

std::vector<TrackField> ApeFields::fields() const {
    RankedFields result;
    for (const Item& item : items_) {
        if (!is_text(item.flags) || item.key.empty() || &item != find(item.key))
            continue;
        const std::string place = clean_text(item.key);
        const std::string name = listed_name(place);
        const std::size_t rank = rank_of_place(ape_places, place);
        const PairNames* names = find_pair(name);
        if (names != nullptr && names->number == name) {
            const NumberPair pair = split_pairs(values_of(item.key));
            result.add(name, rank, pair.numbers);
            result.add(std::string(names->total), 0, pair.totals);
        } else {
            result.add(name, rank + 1, values_of(item.key));
        }
    }
    return result.take();
}

void ApeFields::put(const std::string& key, const Values& values) {
    const Item* old = find(key);
    if (old != nullptr && !is_text(old->flags))
        throw Refused("the APE tag has a binary item of this name");
    std::optional<Item> item;
    if (!values.empty())
        item = Item{old == nullptr ? 0 : old->flags, old == nullptr ? key : old->key,
                    encode_strings(values, TextEncoding::utf8)};
    const auto matches = [&](const Item& other) { return equal_field_names(other.key, key); };
    const auto index = std::ranges::find_if(items_, matches) - items_.begin();
    std::erase_if(items_, matches);
    if (item)
        items_.insert(items_.begin() + index, std::move(*item));
}

void ApeFields::set(const std::string& given_name, const Values& values) {
    const std::string name = listed_name(given_name);
    if (find_pair(name) != nullptr)
        set_pair(name, values);
    else
        set_plain(name, values, given_name);
}

void ApeFields::set_plain(const std::string& name, const Values& values, const std::string& spelling) {
    bool placed = false;
    for (const FieldPlace& row : ape_places)
        if (row.field == name && find(row.place) != nullptr) {
            put(std::string(row.place), values);
            placed = true;
        }
    const FieldPlace* row = row_of_field(ape_places, name);
    if (placed || (row != nullptr && values.empty()))
        return;
    const std::string key = row != nullptr ? std::string(row->place) : spelling;
    if (!values.empty())
        check_key(key);
    put(key, values);
}

void ApeFields::set_pair(const std::string& name, const Values& values) {
    const PairNames& names = *find_pair(name);
    const FieldPlace& row = *row_of_field(ape_places, names.number);
    const std::vector<TrackField> fields = this->fields();
    NumberPair pair;
    for (const std::string_view half : {names.number, names.total})
        if (const Values* old = find_values(fields, half))
            pair.half(names, half) = *old;
    pair.half(names, name) = values;
    const Values texts = join_pairs(pair);
    bool placed = false;
    for (const FieldPlace& place : ape_places) {
        const bool exists = find(place.place) != nullptr;
        if (exists && place.field == names.number) {
            put(std::string(place.place), texts);
            placed = true;
        } else if (exists && place.field == names.total) {
            put(std::string(place.place), pair.totals);
        }
    }
    if (!placed)
        put(std::string(row.place), texts);
}

} // namespace vantaro::core::tags
