#include "vantaro/tags/mp4/mp4_fields.h"

#include "vantaro/tags/number_pair.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr std::string_view freeform = "----";
constexpr std::string_view short_freeform = "--:";
constexpr std::string_view itunes = "com.apple.iTunes";
constexpr unsigned largest_in_pair = 65535;

std::string without_zeros(const std::string& number) {
    return number.substr(std::min(number.find_first_not_of('0'), number.size()));
}

} // namespace

Mp4Fields::Mp4Fields(const Mp4Atoms& atoms, const Mp4Atom& list) {
    FileBytes& file = atoms.file();
    std::size_t end = list.content;
    for (const Mp4Atom* atom : atoms.children(list)) {
        if (big_endian(file.bytes(atom->start, 4)) == 0)
            break; // it goes on to the end of the list, whatever that is
        Item item{{readable_name(atom->name)},
                  atom->content - atom->start,
                  Part(file, atom->start, atom->end - atom->start)};
        if (item.key.atom == freeform)
            item.key.freeform = freeform_name(item.body()).value_or(FreeformName());
        items_.push_back(std::move(item));
        end = atom->end;
    }
    rest_ = Part(file, end, list.end - end);
}

std::vector<Part> Mp4Fields::render() const {
    std::vector<Part> result;
    for (const Item& item : items_)
        result.push_back(item.whole);
    result.push_back(rest_);
    return result;
}

// The field that the atom would hold if its content were text; empty for atoms that are no fields.
std::string Mp4Fields::field_of(const Key& key) const {
    if (key.atom == freeform)
        return listed_name(key.freeform.name);
    const FieldPlace* row = row_of_place(mp4_places, key.atom);
    return row == nullptr || row->place != key.atom ? "" : std::string(row->field);
}

std::string Mp4Fields::listed_name(const std::string& name) const {
    const FieldPlace* row = row_of_place(mp4_places, std::string(short_freeform) + name);
    if (row == nullptr)
        return upper_name(name);
    const auto is_other = [&](const Item& item) {
        return !item.key.freeform.name.empty() && !equal_field_names(item.key.freeform.name, name)
               && equal_field_names(std::string(short_freeform) + item.key.freeform.name,
                                    row_of_field(mp4_places, row->field)->place);
    };
    return row->only_alone && std::ranges::any_of(items_, is_other) ? upper_name(name)
                                                                    : std::string(row->field);
}

std::vector<TrackField> Mp4Fields::fields() const {
    RankedFields result(true);
    for (const Item& item : items_) {
        const std::string name = field_of(item.key);
        if (name.empty())
            continue;
        const Mp4Kind kind = mp4_place(item.key.atom).kind;
        if (kind == Mp4Kind::pair) {
            const Mp4Pair pair = mp4_pair(item.body());
            if (pair.number != 0)
                result.add(name, 0, {std::to_string(pair.number)});
            if (pair.total != 0)
                result.add(std::string(find_pair(name)->total), 0, {std::to_string(pair.total)});
        } else if (const std::optional<Values> values = mp4_values(kind, item.body())) {
            std::size_t rank = rank_of_place(mp4_places, item.key.atom);
            if (item.key.atom == freeform)
                rank = mp4_places.size() + (item.key.freeform.mean == itunes ? 0 : 1);
            result.add(name, rank, *values);
        }
    }
    return result.take();
}

bool Mp4Fields::holds(const std::string& name, const Values& wanted, const Values& found) const {
    if (wanted == found)
        return true;
    const PairNames* pair = find_pair(upper_name(name));
    const FieldPlace* row = row_of_field(mp4_places, pair == nullptr ? std::string_view(name) : pair->number);
    return row != nullptr && mp4_place(row->place).kind != Mp4Kind::text
           && std::ranges::equal(wanted, found, {}, without_zeros, without_zeros);
}

void Mp4Fields::set(const std::string& given_name, const Values& values) {
    const std::string name = listed_name(given_name);
    const PairNames* pair = find_pair(name);
    const bool in_pair =
        pair != nullptr && mp4_place(row_of_field(mp4_places, pair->number)->place).kind == Mp4Kind::pair;
    if (in_pair)
        set_pair(name, values);
    std::vector<Key> keys; // those that the list has, each once
    for (const Item& item : items_) {
        const Mp4Kind kind = mp4_place(item.key.atom).kind;
        if (field_of(item.key) != name || kind == Mp4Kind::pair)
            continue;
        if (item.key.atom == freeform && !mp4_values(kind, item.body()))
            throw Refused("the file has an item of this name that is no text");
        if (std::ranges::find(keys, item.key) == keys.end())
            keys.push_back(item.key);
    }
    bool placed = in_pair;
    for (const Key& key : keys) {
        // The number of a genre gives way to the text.
        const bool is_number = mp4_place(key.atom).kind == Mp4Kind::genre;
        put(key, is_number ? Values() : values);
        placed = placed || !is_number;
    }
    if (placed)
        return;
    const FieldPlace* row = row_of_field(mp4_places, name);
    const std::string place =
        row == nullptr ? std::string(short_freeform) + given_name : std::string(row->place);
    if (place.starts_with(short_freeform))
        put({std::string(freeform), {std::string(itunes), place.substr(short_freeform.size())}}, values);
    else
        put({place}, values);
}

// An empty body removes all of them; otherwise the first gets it and is the only one.
void Mp4Fields::replace(const Key& key, const std::string& body) {
    const auto old = std::ranges::find(items_, key, &Item::key);
    const auto index = old - items_.begin();
    std::erase_if(items_, [&](const Item& item) { return item.key == key; });
    if (!body.empty())
        items_.insert(items_.begin() + index,
                      {key, atom_header_size, Part(make_atom(stored_name(key.atom), body))});
}

void Mp4Fields::put(const Key& key, const Values& values) {
    const Mp4Place& place = mp4_place(key.atom);
    if (values.empty())
        replace(key, {});
    else if (key.atom == freeform)
        replace(key, freeform_body(key.freeform, values));
    else
        replace(key, place.kind == Mp4Kind::text ? text_body(values) : number_body(place, values));
}

void Mp4Fields::set_pair(const std::string& name, const Values& values) {
    const PairNames& names = *find_pair(name);
    const Key key{std::string(row_of_field(mp4_places, names.number)->place)};
    if (values.size() > 1)
        throw Refused("MP4 stores one number here");
    const unsigned number =
        values.empty() || values[0].empty() ? 0 : checked_number(values[0], largest_in_pair);
    const auto old = std::ranges::find(items_, key, &Item::key);
    Mp4Pair pair = old == items_.end() ? Mp4Pair() : mp4_pair(old->body());
    (name == names.number ? pair.number : pair.total) = number;
    replace(key, pair.number != 0 || pair.total != 0 ? pair_body(mp4_place(key.atom), pair) : std::string());
}

} // namespace vantaro::core::tags
