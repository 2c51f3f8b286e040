#include "vantaro/tags/caf/caf_fields.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/caf/caf_places.h"
#include "vantaro/tags/number_pair.h"
#include "vantaro/tags/numbers.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t count_size = 4;
/// What is beyond is kept, but not looked into.
constexpr std::size_t most_entries = 100'000;

} // namespace

CafFields::CafFields(std::string_view bytes) {
    if (bytes.size() < count_size)
        throw vantaro_io::exception_io_data("The chunk \"info\" of the CAF file is too short");
    auto count = static_cast<std::uint32_t>(big_endian(bytes.substr(0, count_size)));
    bytes.remove_prefix(count_size);
    for (; count > 0 && entries_.size() < most_entries; --count) {
        const std::size_t key_end = bytes.find('\0');
        const std::size_t end = key_end == bytes.npos ? key_end : bytes.find('\0', key_end + 1);
        if (end == bytes.npos)
            break;
        entries_.push_back({std::string(bytes.substr(0, key_end)),
                            std::string(bytes.substr(key_end + 1, end - key_end - 1))});
        bytes.remove_prefix(end + 1);
    }
    rest_ = bytes;
    rest_count_ = count;
}

std::string CafFields::render() const {
    std::string result = big_endian_bytes(entries_.size() + rest_count_, count_size);
    for (const Entry& entry : entries_)
        result += entry.key + '\0' + entry.value + '\0';
    return result + rest_;
}

bool CafFields::has(std::string_view key) const {
    return std::ranges::any_of(entries_,
                               [&](const Entry& entry) { return equal_field_names(entry.key, key); });
}

std::string CafFields::listed_name(const std::string& name) const {
    const FieldPlace* row = row_of_place(caf_places, name);
    return row == nullptr ? upper_name(name) : std::string(row->field);
}

std::vector<TrackField> CafFields::fields() const {
    RankedFields result;
    for (const Entry& entry : entries_) {
        const std::string key = clean_text(entry.key);
        if (key.empty())
            continue;
        const std::string name = listed_name(key);
        const std::size_t rank = rank_of_place(caf_places, key);
        const Values values{clean_text(entry.value)};
        const PairNames* names = find_pair(name);
        if (names != nullptr && names->number == name) {
            const NumberPair pair = split_pairs(values);
            result.add(name, rank, pair.numbers);
            result.add(std::string(names->total), 0, pair.totals);
        } else {
            result.add(name, rank + 1, values);
        }
    }
    return result.take();
}

// The first of the key keeps its place and spelling.
void CafFields::put(std::string_view key, const Values& values) {
    const auto matches = [&](const Entry& entry) { return equal_field_names(entry.key, key); };
    auto first = std::ranges::find_if(entries_, matches);
    if (!values.empty() && first == entries_.end()) {
        entries_.push_back({std::string(key), values.front()});
        return;
    }
    if (!values.empty())
        (first++)->value = values.front();
    entries_.erase(std::remove_if(first, entries_.end(), matches), entries_.end());
}

void CafFields::set(const std::string& given_name, const Values& values) {
    if (values.size() > 1)
        throw Refused("CAF stores one value under a name");
    const std::string name = listed_name(given_name);
    if (find_pair(name) != nullptr) {
        set_pair(name, values);
        return;
    }
    bool placed = false;
    for (const FieldPlace& row : caf_places)
        if (row.field == name && has(row.place)) {
            put(row.place, values);
            placed = true;
        }
    const FieldPlace* row = row_of_field(caf_places, name);
    if (!placed)
        put(row != nullptr ? row->place : std::string_view(given_name), values);
}

void CafFields::set_pair(const std::string& name, const Values& values) {
    const PairNames& names = *find_pair(name);
    const std::vector<TrackField> fields = this->fields();
    NumberPair pair;
    for (const std::string_view half : {names.number, names.total})
        if (const Values* old = find_values(fields, half))
            pair.half(names, half) = *old;
    pair.half(names, name) = values;
    const Values texts = join_pairs(pair);
    if (texts.size() > 1)
        throw Refused("CAF stores one value under a name");
    bool placed = false;
    for (const FieldPlace& row : caf_places) {
        if (!has(row.place))
            continue;
        if (row.field == names.number) {
            put(row.place, texts);
            placed = true;
        } else if (row.field == names.total) {
            put(row.place, pair.totals);
        }
    }
    if (!placed)
        put(row_of_field(caf_places, names.number)->place, texts);
}

} // namespace vantaro::core::tags
