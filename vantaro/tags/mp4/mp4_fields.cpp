#include "vantaro/tags/mp4/mp4_fields.h"

#include "vantaro/tags/mp4/mp4_data.h"
#include "vantaro/tags/mp4/mp4_places.h"
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

Mp4Fields::Mp4Fields(std::string_view bytes) {
    while (const std::optional<Mp4Child> atom = take_atom(bytes))
        atoms_.push_back({std::string(atom->name), std::string(atom->body)});
    rest_ = bytes;
}

std::string Mp4Fields::render() const {
    std::string result;
    for (const Atom& atom : atoms_)
        result += make_atom(atom.name, atom.body);
    return result + rest_;
}

// An atom's name, for freeform atoms "----:mean:name".
std::string Mp4Fields::place_of(const Atom& atom) const {
    if (atom.name != freeform)
        return atom.name;
    const std::optional<FreeformName> name = freeform_name(atom.body);
    return name ? std::string(freeform) + ":" + name->mean + ":" + name->name : "";
}

// The field that the atom would hold if its content were text; empty for atoms that are no fields.
std::string Mp4Fields::field_of(const Atom& atom) const {
    if (atom.name != freeform) {
        const FieldPlace* row = row_of_place(mp4_places, atom.name);
        return row == nullptr || row->place != atom.name ? "" : std::string(row->field);
    }
    const std::optional<FreeformName> name = freeform_name(atom.body);
    return name ? listed_name(name->name) : "";
}

std::string Mp4Fields::listed_name(const std::string& name) const {
    const FieldPlace* row = row_of_place(mp4_places, std::string(short_freeform) + name);
    if (row == nullptr)
        return upper_name(name);
    const auto is_other = [&](const Atom& atom) {
        const std::optional<FreeformName> freeform_of =
            atom.name == freeform ? freeform_name(atom.body) : std::nullopt;
        return freeform_of && !equal_field_names(freeform_of->name, name)
               && equal_field_names(std::string(short_freeform) + freeform_of->name,
                                    row_of_field(mp4_places, row->field)->place);
    };
    return row->only_alone && std::ranges::any_of(atoms_, is_other) ? upper_name(name)
                                                                    : std::string(row->field);
}

std::vector<TrackField> Mp4Fields::fields() const {
    RankedFields result(true);
    for (const Atom& atom : atoms_) {
        const std::string name = field_of(atom);
        if (name.empty())
            continue;
        if (mp4_kind(atom.name) == Mp4Kind::pair) {
            const Mp4Pair pair = mp4_pair(atom.body);
            if (pair.number != 0)
                result.add(name, 0, {std::to_string(pair.number)});
            if (pair.total != 0)
                result.add(std::string(find_pair(name)->total), 0, {std::to_string(pair.total)});
        } else if (const std::optional<Values> values = mp4_values(atom.name, atom.body)) {
            std::size_t rank = rank_of_place(mp4_places, atom.name);
            if (atom.name == freeform)
                rank = mp4_places.size() + (freeform_name(atom.body)->mean == itunes ? 0 : 1);
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
    return row != nullptr && mp4_kind(row->place) != Mp4Kind::text
           && std::ranges::equal(wanted, found, {}, without_zeros, without_zeros);
}

void Mp4Fields::set(const std::string& given_name, const Values& values) {
    const std::string name = listed_name(given_name);
    const PairNames* pair = find_pair(name);
    const bool in_pair =
        pair != nullptr && mp4_kind(row_of_field(mp4_places, pair->number)->place) == Mp4Kind::pair;
    if (in_pair)
        set_pair(name, values);
    Values places; // those that the list has, each once
    for (const Atom& atom : atoms_) {
        if (field_of(atom) != name || mp4_kind(atom.name) == Mp4Kind::pair)
            continue;
        if (atom.name == freeform && !mp4_values(atom.name, atom.body))
            throw Refused("the file has an item of this name that is no text");
        const std::string place = place_of(atom);
        if (std::ranges::find(places, place) == places.end())
            places.push_back(place);
    }
    bool placed = in_pair;
    for (const std::string& place : places) {
        // The number of a genre gives way to the text.
        put(place, place == "gnre" ? Values() : values);
        placed = placed || place != "gnre";
    }
    if (placed)
        return;
    const FieldPlace* row = row_of_field(mp4_places, name);
    if (row == nullptr)
        put(std::string(freeform) + ":" + std::string(itunes) + ":" + given_name, values);
    else if (row->place.starts_with(short_freeform))
        put(std::string(freeform) + ":" + std::string(itunes) + std::string(row->place.substr(2)), values);
    else
        put(std::string(row->place), values);
}

void Mp4Fields::put(const std::string& place, const Values& values) {
    const auto matches = [&](const Atom& atom) { return place_of(atom) == place; };
    const auto old = std::ranges::find_if(atoms_, matches);
    const auto index = old - atoms_.begin();
    std::optional<Atom> atom;
    if (values.empty()) {
        atom = std::nullopt;
    } else if (place.starts_with(freeform)) {
        // Neither part is known to contain a colon but the name.
        const std::string_view names = std::string_view(place).substr(freeform.size() + 1);
        const std::size_t colon = names.find(':');
        const FreeformName name = old != atoms_.end() ? *freeform_name(old->body)
                                                      : FreeformName{std::string(names.substr(0, colon)),
                                                                     std::string(names.substr(colon + 1))};
        atom = Atom{std::string(freeform), freeform_body(name, values)};
    } else if (mp4_kind(place) == Mp4Kind::text) {
        atom = Atom{place, text_body(values)};
    } else {
        atom = Atom{place, number_body(place, values)};
    }
    std::erase_if(atoms_, matches);
    if (atom)
        atoms_.insert(atoms_.begin() + index, std::move(*atom));
}

void Mp4Fields::set_pair(const std::string& name, const Values& values) {
    const PairNames& names = *find_pair(name);
    const std::string place(row_of_field(mp4_places, names.number)->place);
    if (values.size() > 1)
        throw Refused("MP4 stores one number here");
    const unsigned number =
        values.empty() || values[0].empty() ? 0 : checked_number(values[0], largest_in_pair);
    const auto matches = [&](const Atom& atom) { return atom.name == place; };
    const auto old = std::ranges::find_if(atoms_, matches);
    const auto index = old - atoms_.begin();
    Mp4Pair pair = old == atoms_.end() ? Mp4Pair() : mp4_pair(old->body);
    (name == names.number ? pair.number : pair.total) = number;
    std::erase_if(atoms_, matches);
    if (pair.number != 0 || pair.total != 0)
        atoms_.insert(atoms_.begin() + index, {place, pair_body(place, pair)});
}

} // namespace vantaro::core::tags
