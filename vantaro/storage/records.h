// The framing of stored configurations: records of a 16-byte GUID, a size (32 bits, little-endian) and that
// many bytes, up to the end. Fewer than 16 bytes after the last record have no meaning.
//
//     const std::optional<Records> records = parse_records(bytes);       // views of `bytes`
//
// Any thread.
#pragma once

#include "host/api/guid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantaro::core {

struct Record {
    /// The variable, and which one this is of several records for it, 0 for the last: who reads all of them
    /// and keeps one keeps that.
    std::pair<Guid, std::size_t> key;
    std::string_view value;
    /// The whole record as it stands in the stream.
    std::string_view bytes;
};

struct Records {
    std::vector<Record> records;
    /// What is left at the end.
    std::string_view tail;
};

/// Views of `bytes`, which must live as long; nothing when a record is longer than what is left.
std::optional<Records> parse_records(std::string_view bytes);

struct MergedRecords {
    std::string bytes;
    /// The records of `bytes` that whoever has `ours` does not know yet.
    std::string news;
    /// What `ours` has to be compared with next time, once the news have been taken.
    std::string base;
    /// Whether `ours` and `theirs` both changed the same record, to different values.
    bool has_conflict = false;
    /// Whether a variable stands in `theirs` more often than in `ours`; the first of them are left out.
    bool has_surplus = false;
};

/// `ours` with what somebody else made of the same `base` meanwhile:
///   - a record that is in `ours` as it is in `base` takes the value of `theirs`;
///   - one that is not stays as it is in `ours`;
///   - one of a variable that is only in `theirs` follows at the end;
///   - no variable goes away: what `theirs` lacks stays as it is in `ours`.
MergedRecords merge_records(const Records& base, const Records& ours, const Records& theirs);

} // namespace vantaro::core
