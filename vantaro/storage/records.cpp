#include "vantaro/storage/records.h"

#include <algorithm>
#include <map>

namespace vantaro::core {

namespace {

constexpr std::size_t guid_size = sizeof(Guid);
constexpr std::size_t header_size = guid_size + sizeof(std::uint32_t);

std::uint32_t read_little_endian(std::string_view bytes) {
    std::uint32_t value = 0;
    for (std::size_t n = 0; n < sizeof value; ++n)
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[n])) << (8 * n);
    return value;
}

using Index = std::map<std::pair<Guid, std::size_t>, const Record*>;

Index index_of(const Records& records) {
    Index index;
    for (const Record& record : records.records)
        index.emplace(record.key, &record);
    return index;
}

bool has_value(const Index& index, const Record& record) {
    const auto found = index.find(record.key);
    return found != index.end() && found->second->value == record.value;
}

} // namespace

std::optional<Records> parse_records(std::string_view bytes) {
    Records result;
    std::map<Guid, std::size_t> counts;
    while (bytes.size() >= guid_size) {
        if (bytes.size() < header_size)
            return std::nullopt;
        const std::size_t size = read_little_endian(bytes.substr(guid_size));
        if (bytes.size() - header_size < size)
            return std::nullopt;
        Guid id;
        std::ranges::transform(bytes.substr(0, guid_size), id.bytes.begin(),
                               [](char c) { return static_cast<std::uint8_t>(c); });
        ++counts[id];
        result.records.push_back({.key = {id, 0},
                                  .value = bytes.substr(header_size, size),
                                  .bytes = bytes.substr(0, header_size + size)});
        bytes.remove_prefix(header_size + size);
    }
    for (Record& record : result.records)
        record.key.second = --counts[record.key.first];
    result.tail = bytes;
    return result;
}

MergedRecords merge_records(const Records& base, const Records& ours, const Records& theirs) {
    const Index base_index = index_of(base);
    const Index our_index = index_of(ours);
    const Index their_index = index_of(theirs);
    MergedRecords merged;
    for (const Record& record : ours.records) {
        const auto their = their_index.find(record.key);
        const bool is_ours = !has_value(base_index, record);
        if (is_ours || their == their_index.end()) {
            merged.bytes += record.bytes;
        } else {
            merged.bytes += their->second->bytes;
            if (their->second->value != record.value)
                merged.news += their->second->bytes;
        }
        const bool is_conflict = is_ours && their != their_index.end() && their->second->value != record.value
                                 && !has_value(base_index, *their->second);
        merged.has_conflict = merged.has_conflict || is_conflict;
        // As long as a conflict is not settled, it stays one.
        if (const auto old = base_index.find(record.key);
            (is_conflict || their == their_index.end()) && old != base_index.end())
            merged.base += old->second->bytes;
        else if (!is_conflict && their != their_index.end())
            merged.base += their->second->bytes;
    }
    for (const Record& record : theirs.records) {
        if (our_index.contains(record.key))
            continue;
        if (our_index.contains({record.key.first, 0})) {
            merged.has_surplus = true;
            continue;
        }
        merged.bytes += record.bytes;
        merged.base += record.bytes;
        if (!has_value(base_index, record))
            merged.news += record.bytes;
    }
    merged.bytes += ours.tail;
    return merged;
}

} // namespace vantaro::core
