#include "vantaro/journal/shrink.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"
#include "vantaro/journal/packing.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>

namespace vantaro::core {

namespace {

/// Enough of a record to tell its kind, and whole outcomes.
constexpr std::size_t head = 128;

void append(JournalFile& journal, const Record& record) {
    const std::string bytes = encode(record);
    journal.append({&bytes, 1});
}

std::string read_whole(const OpenFile& journal, std::uint64_t position) {
    JournalReader reader(journal);
    reader.seek(position);
    const std::optional<std::string> bytes = reader.next();
    if (!bytes)
        throw vantaro_io::exception_io_data(journal.path() + " is damaged");
    return *bytes;
}

/// As it was noted, packed.
KeptChange kept(FileChange change, const FileIdentity& after) {
    std::vector<std::uint64_t> old_sizes;
    for (ChangedRange& range : change.ranges) {
        old_sizes.push_back(range.old_bytes.size());
        range.old_bytes = pack(range.old_bytes, range.new_bytes);
        range.new_bytes = {};
    }
    return {std::move(change), after, std::move(old_sizes)};
}

} // namespace

void shrink_journal(SystemCalls& calls, const std::string& path) {
    const OpenFile old = OpenFile::open(calls, path, O_RDONLY);
    const std::string new_path = path + ".new";
    calls.unlink(new_path); // of an earlier attempt
    JournalFile journal = JournalFile::create(calls, new_path);
    try {
        JournalReader reader(old);
        append(journal, decode(reader.next().value_or("")));
        for (const MadeChange& made : made_changes(old)) {
            StoredChange stored = read_change(old, made.position);
            append(journal, stored.old_sizes.empty()
                                ? kept(std::move(stored.change), made.after)
                                : KeptChange{stored.change, made.after, stored.old_sizes});
        }
        append(journal, decode(reader.last(encode(RunEnd()).size()).value_or("")));
        journal.flush();
        if (calls.rename(new_path, path) != 0)
            throw_system_error(errno, new_path);
    } catch (const vantaro_io::exception_io&) {
        calls.unlink(new_path);
        throw;
    }
}

std::vector<MadeChange> made_changes(const OpenFile& journal) {
    std::vector<MadeChange> result;
    std::map<std::uint64_t, std::uint64_t> noted; // number and position
    std::map<std::uint64_t, ChangeOutcome> outcomes;
    JournalReader reader(journal);
    for (std::uint64_t position = reader.position(); const auto bytes = reader.next_head(head);
         position = reader.position()) {
        if (begins<NotedChange>(*bytes)) {
            noted[noted_number(*bytes)] = position;
        } else if (begins<ChangeOutcome>(*bytes)) {
            const auto outcome = std::get<ChangeOutcome>(decode(*bytes));
            outcomes[outcome.number] = outcome;
        } else if (begins<KeptChange>(*bytes)) {
            result.push_back({position, std::get<KeptChange>(decode(read_whole(journal, position))).after});
        }
    }
    for (const auto& [number, position] : noted) {
        const auto outcome = outcomes.find(number);
        if (outcome != outcomes.end() && outcome->second.state == FileState::as_changed)
            result.push_back({position, outcome->second.after});
    }
    return result;
}

StoredChange read_change(const OpenFile& journal, std::uint64_t position) {
    Record record = decode(read_whole(journal, position));
    if (auto* noted = std::get_if<NotedChange>(&record))
        return {std::move(noted->change), {}};
    if (auto* kept_change = std::get_if<KeptChange>(&record);
        kept_change != nullptr && kept_change->old_sizes.size() == kept_change->change.ranges.size())
        return {std::move(kept_change->change), std::move(kept_change->old_sizes)};
    throw vantaro_io::exception_io_data(journal.path() + " is damaged");
}

void restore_old_bytes(StoredChange& stored, const OpenFile& file) {
    for (std::size_t i = 0; i < stored.old_sizes.size(); ++i) {
        ChangedRange& range = stored.change.ranges[i];
        const std::string new_bytes = file.read(range.new_offset, range.new_size);
        range.old_bytes = unpack(range.old_bytes, new_bytes, stored.old_sizes[i]);
    }
    stored.old_sizes.clear();
}

} // namespace vantaro::core
