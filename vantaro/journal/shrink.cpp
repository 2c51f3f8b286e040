#include "vantaro/journal/shrink.h"

#include "host/api/exceptions.h"
#include "vantaro/common/checksum.h"
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
    std::optional<std::string> bytes = reader.next();
    if (!bytes || reader.start() != position)
        throw vantaro_io::exception_io_data("What the run's journal has of the file is damaged");
    return std::move(*bytes);
}

/// As it was noted, packed.
KeptChange kept(FileChange change, const FileIdentity& after) {
    for (ChangedRange& range : change.ranges) {
        range.old_bytes = pack(range.old_bytes, range.new_bytes);
        range.new_bytes = {};
    }
    return {std::move(change), after};
}

} // namespace

void shrink_journal(SystemCalls& calls, const std::string& path) {
    const OpenFile old = open_journal(calls, path, O_RDONLY);
    const MadeChanges made = made_changes(old);
    JournalReader reader(old);
    const std::string start = reader.next().value_or("");
    const std::string end = reader.last(encode(RunEnd()).size()).value_or("");
    if (!made.damaged.empty() || !begins<RunStart>(start) || !begins<RunEnd>(end))
        throw vantaro_io::exception_io_data(path + " is damaged"); // it keeps what can be read
    const std::string new_path = path + ".new";
    calls.unlink(new_path); // of an earlier attempt
    JournalFile journal = JournalFile::create(calls, new_path);
    try {
        journal.append({&start, 1});
        for (const MadeChange& change : made.changes) {
            const std::string bytes = read_whole(old, change.position);
            // Whoever looks at a file of which nobody knows what became needs all of the change.
            if (change.is_certain && begins<NotedChange>(bytes))
                append(journal, kept(std::get<NotedChange>(decode(bytes)).change, change.after));
            else
                journal.append({&bytes, 1});
        }
        journal.append({&end, 1});
        journal.flush();
        if (calls.rename(new_path, path) != 0)
            throw_system_error(errno, new_path);
    } catch (const std::exception&) {
        calls.unlink(new_path);
        throw;
    }
}

MadeChanges made_changes(const OpenFile& journal) {
    MadeChanges result;
    std::map<std::uint64_t, std::uint64_t> noted; // number and position
    std::map<std::uint64_t, ChangeOutcome> outcomes;
    JournalReader reader(journal);
    while (const auto bytes = reader.next_head(head)) {
        if (begins<NotedChange>(*bytes)) {
            noted[noted_number(*bytes)] = reader.start();
        } else if (begins<ChangeOutcome>(*bytes)) {
            const auto outcome = std::get<ChangeOutcome>(decode(*bytes));
            outcomes[outcome.number] = outcome;
        } else if (begins<KeptChange>(*bytes)) {
            result.changes.push_back({reader.start(), {}, true});
        }
    }
    for (const auto& [number, position] : noted) {
        const auto outcome = outcomes.find(number);
        const FileState state = outcome == outcomes.end() ? FileState::foreign : outcome->second.state;
        if (state != FileState::as_before)
            result.changes.push_back({position,
                                      outcome == outcomes.end() ? FileIdentity() : outcome->second.after,
                                      state == FileState::as_changed});
    }
    constexpr std::size_t longest_path = 4096;
    for (const std::uint64_t position : reader.damaged())
        if (const std::string bytes = reader.head_at(position, longest_path + head);
            begins<NotedChange>(bytes) || begins<KeptChange>(bytes))
            result.damaged.push_back(path_in(bytes));
    return result;
}

StoredChange read_change(const OpenFile& journal, std::uint64_t position) {
    Record record = decode(read_whole(journal, position));
    if (auto* noted = std::get_if<NotedChange>(&record))
        return {std::move(noted->change), false};
    if (auto* kept_change = std::get_if<KeptChange>(&record))
        return {std::move(kept_change->change), true};
    throw vantaro_io::exception_io_data(journal.path() + " is damaged");
}

void restore_old_bytes(StoredChange& stored, const OpenFile& file) {
    for (ChangedRange& range : stored.change.ranges) {
        if (stored.is_packed)
            range.old_bytes =
                unpack(range.old_bytes, file.read(range.new_offset, range.new_size), range.old_size);
        if (range.old_checksum && checksum(range.old_bytes) != *range.old_checksum)
            throw vantaro_io::exception_io_data("What the run's journal has of the file is damaged");
    }
    stored.is_packed = false;
}

} // namespace vantaro::core
