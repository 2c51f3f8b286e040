// The file of a journal: a mark, then records, each with its length and checksum in front
// (docs/run-journal.md). It only ever grows, so that a crash cuts off at most what was being appended.
//
//     JournalFile journal = JournalFile::create(calls, path);
//     journal.append({encode(start)});
//     journal.flush();
//     ...
//     JournalReader reader(journal.file());
//     while (std::optional<std::string> record = reader.next()) ...
//
// One thread at a time. Throws vantaro_io::exception_io that names the journal.
#pragma once

#include "vantaro/safe_write/open_file.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantaro::core {

class JournalFile {
public:
    /// A new file with nothing but the mark. It belongs to this process until
    /// it is closed, which others see by its lock.
    static JournalFile create(SystemCalls& calls, const std::string& path);
    /// Takes over one that its process did not finish, and cuts off a torn end. Nothing when a process is
    /// still at it.
    static std::optional<JournalFile> take_over(SystemCalls& calls, const std::string& path);

    /// Appends records in one write. After a failure the journal is as it was; if not even that can be made
    /// sure, it takes no more.
    void append(std::span<const std::string> records);
    /// Everything appended is on the medium.
    void flush();
    /// In bytes.
    std::uint64_t size() const { return size_; }
    const OpenFile& file() const { return file_; }
    const std::string& path() const { return file_.path(); }

private:
    explicit JournalFile(OpenFile file) : file_(std::move(file)) {}

    OpenFile file_;
    std::uint64_t size_ = 0;
    bool is_broken_ = false;
};

/// Opens a journal. Throws vantaro_io::exception_io when it is not the user's own, or others can write to it:
/// what it says would be done with the user's files.
OpenFile open_journal(SystemCalls& calls, const std::string& path, int flags);

/// Whether no process is at the journal, which is open in this one for reading.
bool is_abandoned(const OpenFile& journal);

/// Reads a journal from the beginning. `file` outlives it. Records that are damaged are passed over.
class JournalReader {
public:
    /// Throws exception_io_data when the file is no journal.
    explicit JournalReader(const OpenFile& file);

    /// The next record's bytes; nothing when no whole one follows: at the end, or where the journal is torn.
    std::optional<std::string> next();
    /// The same, without the bytes behind the first few of a record that is longer than `most`. Such a record
    /// can be damaged.
    std::optional<std::string> next_head(std::size_t most);
    /// The first bytes of the record that starts there, damaged or not.
    std::string head_at(std::uint64_t position, std::size_t most) const;
    /// Where the record ends that was read last, and the next one starts unless that is damaged.
    std::uint64_t position() const { return position_; }
    /// Where the record starts that was read last.
    std::uint64_t start() const { return start_; }
    /// Where damaged records were passed over.
    const std::vector<std::uint64_t>& damaged() const { return damaged_; }
    void seek(std::uint64_t position) { position_ = position; }
    /// The last record when it has just that size, without reading what stands before it.
    std::optional<std::string> last(std::size_t size);

private:
    struct Found {
        std::string bytes;
        std::uint64_t end = 0;
    };

    std::optional<Found> read_record(std::uint64_t position, std::size_t most) const;
    std::optional<std::uint64_t> find_record(std::uint64_t from) const;

    const OpenFile& file_;
    std::uint64_t file_size_;
    std::uint64_t position_;
    std::uint64_t start_;
    std::vector<std::uint64_t> damaged_;
};

} // namespace vantaro::core
