#include "vantaro/tags/riff/sizes64.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/numbers.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t number_size = 8;
constexpr std::size_t count_place = 3 * number_size; // the number of samples stands before it
constexpr std::size_t table_place = count_place + 4;
constexpr std::size_t entry_size = 4 + number_size;
/// Each is of a chunk of gigabytes.
constexpr std::uint64_t most_entries = 1000;

} // namespace

Sizes64::Sizes64(std::string_view body) {
    if (body.size() < table_place)
        throw vantaro_io::exception_io_data("The chunk \"ds64\" of the file is too short");
    form = little_endian(body.substr(0, number_size));
    audio = little_endian(body.substr(number_size, number_size));
    const std::uint64_t count = little_endian(body.substr(count_place, 4));
    body.remove_prefix(table_place);
    if (count > most_entries || count > body.size() / entry_size)
        throw vantaro_io::exception_io_data("The table in the chunk \"ds64\" is longer than the chunk");
    for (std::uint64_t i = 0; i < count; ++i, body.remove_prefix(entry_size))
        table.push_back({std::string(body.substr(0, 4)), little_endian(body.substr(4, number_size))});
}

std::string Sizes64::render(std::string_view old) const {
    std::string entries;
    for (const Entry& entry : table)
        if (!entry.name.empty())
            entries += entry.name + little_endian_bytes(entry.size, number_size);
    const std::size_t count = entries.size() / entry_size;
    entries.resize(table.size() * entry_size); // where fewer are left
    return little_endian_bytes(form, number_size) + little_endian_bytes(audio, number_size)
           + std::string(old.substr(2 * number_size, number_size)) + little_endian_bytes(count, 4) + entries
           + std::string(old.substr(table_place + entries.size()));
}

} // namespace vantaro::core::tags
