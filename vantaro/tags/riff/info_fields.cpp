#include "vantaro/tags/riff/info_fields.h"

#include "vantaro/tags/number_pair.h"
#include "vantaro/tags/numbers.h"
#include "vantaro/tags/riff/info_places.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

/// What is beyond is kept, but not looked into.
constexpr std::size_t most_entries = 100'000;

} // namespace

InfoFields::InfoFields(std::string_view bytes) {
    while (bytes.size() >= 8 && entries_.size() < most_entries) {
        std::size_t size = little_endian(bytes.substr(4, 4));
        const std::string id(bytes.substr(0, 4));
        bytes.remove_prefix(8);
        size = std::min(size, bytes.size());
        entries_.push_back({id, std::string(bytes.substr(0, size))});
        bytes.remove_prefix(std::min(size + size % 2, bytes.size()));
    }
    rest_ = bytes;
}

std::string InfoFields::render() const {
    std::string result;
    for (const Entry& entry : entries_) {
        result += entry.id;
        result += little_endian_bytes(entry.body.size(), 4);
        result += entry.body;
        result.append(entry.body.size() % 2, '\0');
    }
    return result + rest_;
}

std::vector<TrackField> InfoFields::fields() const {
    RankedFields result;
    for (const Entry& entry : entries_) {
        const FieldPlace* row = row_of_place(info_places, entry.id);
        if (row == nullptr)
            continue;
        const Values values{utf8_or_latin1(entry.body)};
        const std::size_t rank = rank_of_place(info_places, entry.id);
        const PairNames* names = find_pair(row->field);
        if (names != nullptr) {
            const NumberPair pair = split_pairs(values);
            result.add(std::string(names->number), rank, pair.numbers);
            result.add(std::string(names->total), rank, pair.totals);
        } else {
            result.add(std::string(row->field), rank, values);
        }
    }
    return result.take();
}

void InfoFields::set(const std::string& given_name, const Values& values) {
    const std::string name = upper_name(given_name);
    const PairNames* names = find_pair(name);
    const std::string_view field = names != nullptr ? names->number : std::string_view(name);
    for (Entry& entry : entries_) {
        const FieldPlace* row = row_of_place(info_places, entry.id);
        if (row == nullptr || row->field != field)
            continue;
        Values texts = values;
        if (names != nullptr) {
            NumberPair pair = split_pairs({utf8_or_latin1(entry.body)});
            pair.half(*names, name) = values;
            texts = join_pairs(pair);
        }
        if (texts.empty())
            entry.id.clear();
        else
            entry.body = texts.front() + '\0';
    }
    std::erase_if(entries_, [](const Entry& entry) { return entry.id.empty(); });
}

} // namespace vantaro::core::tags
