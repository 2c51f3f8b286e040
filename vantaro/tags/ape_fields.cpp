#include "vantaro/tags/ape_fields.h"

#include "vantaro/tags/ape_places.h"
#include "vantaro/tags/number_pair.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

using TagLib::APE::Item;

void check_key(const std::string& key) {
    if (!TagLib::APE::Tag::checkKey(to_taglib(key)) || key.size() < 2 || key.size() > 255)
        throw Refused(
            "the key of an APE item has 2 to 255 ASCII characters and is not ID3, TAG, OggS or MP+");
}

bool is_text(const Item& item) {
    return item.type() == Item::Text;
}

} // namespace

std::string ApeFields::listed_name(const std::string& name) const {
    const FieldPlace* row = row_of_place(ape_places, name);
    return row == nullptr ? upper_name(name) : std::string(row->field);
}

Values ApeFields::values_of(const std::string& key) const {
    Values values;
    const auto& items = tag_->itemListMap();
    const auto item = items.find(to_taglib(upper_name(key)));
    if (item != items.end() && is_text(item->second))
        for (const TagLib::String& value : item->second.values())
            values.push_back(from_taglib(value));
    return values;
}

std::vector<TrackField> ApeFields::fields() const {
    RankedFields result;
    for (const auto& [key, item] : tag_->itemListMap()) {
        if (!is_text(item))
            continue;
        const std::string place = from_taglib(key);
        const std::string name = listed_name(place);
        const std::size_t rank = rank_of_place(ape_places, place);
        const PairNames* names = find_pair(name);
        if (names != nullptr && names->number == name) {
            const NumberPair pair = split_pairs(values_of(place));
            result.add(name, rank, pair.numbers);
            result.add(std::string(names->total), 0, pair.totals);
        } else {
            result.add(name, rank + 1, values_of(place));
        }
    }
    return result.take();
}

void ApeFields::put(const std::string& key, const Values& values) {
    const TagLib::String name = to_taglib(upper_name(key));
    const auto& items = tag_->itemListMap();
    const auto old = items.find(name);
    if (old != items.end() && !is_text(old->second))
        throw Refused("the APE tag has a binary item of this name");
    if (values.empty()) {
        tag_->removeItem(name);
        return;
    }
    TagLib::StringList list;
    for (const std::string& value : values)
        list.append(to_taglib(value));
    Item item = old == items.end() ? Item(to_taglib(key), list) : old->second;
    item.setValues(list);
    tag_->setItem(name, item);
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
        if (row.field == name && tag_->itemListMap().contains(to_taglib(upper_name(row.place)))) {
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
        const bool exists = tag_->itemListMap().contains(to_taglib(upper_name(place.place)));
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
