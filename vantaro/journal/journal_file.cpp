#include "vantaro/journal/journal_file.h"

#include "host/api/exceptions.h"
#include "vantaro/common/checksum.h"
#include "vantaro/common/system_error.h"

#include <QtEndian>

#include <fcntl.h>
#include <sys/file.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace vantaro::core {

namespace {

constexpr std::string_view mark = "vantaro run 1\n";
constexpr std::size_t head_size = 8;

struct Head {
    std::uint32_t size = 0;
    std::uint32_t checksum = 0;
};

void append_head(std::string& bytes, const Head& head) {
    std::array<char, head_size> stored{};
    qToLittleEndian(head.size, stored.data());
    qToLittleEndian(head.checksum, stored.data() + sizeof head.size);
    bytes.append(stored.data(), stored.size());
}

Head read_head(const std::string& bytes) {
    return {qFromLittleEndian<std::uint32_t>(bytes.data()),
            qFromLittleEndian<std::uint32_t>(bytes.data() + sizeof(std::uint32_t))};
}

template <class Action>
auto naming(const std::string& path, const Action& action) {
    try {
        return action();
    } catch (const vantaro_io::exception_io& error) {
        throw vantaro_io::exception_io("The journal " + path + ": " + error.what());
    }
}

/// Whether not even the whole mark got to the medium: nothing was flushed then.
bool is_beginning(const std::string& bytes) {
    const std::size_t zeros = bytes.find_last_not_of('\0') + 1; // where they start
    return zeros < mark.size() && mark.starts_with(std::string_view(bytes).substr(0, zeros));
}

bool lock(const OpenFile& file) {
    if (::flock(file.descriptor(), LOCK_EX | LOCK_NB) == 0)
        return true;
    if (errno != EWOULDBLOCK)
        throw_system_error(errno);
    return false;
}

} // namespace

JournalFile JournalFile::create(SystemCalls& calls, const std::string& path) {
    return naming(path, [&] {
        const int descriptor = calls.create(path);
        if (descriptor < 0)
            throw_system_error(errno);
        JournalFile journal(OpenFile(calls, descriptor, path));
        try {
            lock(journal.file_);
            journal.file_.write(0, mark);
        } catch (const vantaro_io::exception_io&) {
            calls.unlink(path);
            throw;
        }
        journal.size_ = mark.size();
        return journal;
    });
}

std::optional<JournalFile> JournalFile::take_over(SystemCalls& calls, const std::string& path) {
    return naming(path, [&]() -> std::optional<JournalFile> {
        JournalFile journal(OpenFile::open(calls, path, O_RDWR));
        if (!lock(journal.file_))
            return std::nullopt;
        if (is_beginning(journal.file_.read(0, mark.size()))) {
            journal.file_.truncate(0);
            journal.file_.write(0, mark);
        }
        JournalReader reader(journal.file_);
        while (reader.next())
            continue;
        journal.size_ = reader.position();
        journal.file_.truncate(journal.size_);
        return journal;
    });
}

void JournalFile::append(std::span<const std::string> records) {
    std::string bytes;
    for (const std::string& record : records) {
        append_head(bytes, {static_cast<std::uint32_t>(record.size()), checksum(record)});
        bytes += record;
    }
    naming(path(), [&] {
        if (is_broken_)
            throw vantaro_io::exception_io("It could not be written before");
        try {
            file_.write(size_, bytes);
        } catch (const vantaro_io::exception_io&) {
            is_broken_ = true; // unless what was written of it can be cut off
            file_.truncate(size_);
            is_broken_ = false;
            throw;
        }
    });
    size_ += bytes.size();
}

void JournalFile::flush() {
    naming(path(), [&] {
        try {
            file_.sync();
        } catch (const vantaro_io::exception_io&) {
            is_broken_ = true; // what was lost, nobody can tell
            throw;
        }
    });
}

JournalReader::JournalReader(const OpenFile& file)
    : file_(file), file_size_(file.identity().size), position_(mark.size()) {
    if (file.read(0, mark.size()) != mark)
        throw vantaro_io::exception_io_data(file.path() + " is no journal of a run");
}

std::optional<std::string> JournalReader::read_record(std::uint64_t position, std::size_t most) {
    const std::string stored_head = file_.read(position, head_size);
    if (stored_head.size() < head_size)
        return std::nullopt;
    const Head head = read_head(stored_head);
    // After a power failure a file can end in zeros; no record is empty.
    if (head.size == 0 || head.size > file_size_ - position - head_size)
        return std::nullopt;
    std::string record = file_.read(position + head_size, std::min<std::size_t>(head.size, most));
    if (head.size <= most && checksum(record) != head.checksum)
        return std::nullopt;
    position_ = position + head_size + head.size;
    return record;
}

std::optional<std::string> JournalReader::next() {
    return read_record(position_, SIZE_MAX);
}

std::optional<std::string> JournalReader::next_head(std::size_t most) {
    return read_record(position_, most);
}

std::optional<std::string> JournalReader::last(std::size_t size) {
    if (file_size_ < mark.size() + head_size + size)
        return std::nullopt;
    const std::uint64_t here = position_;
    std::optional<std::string> record = read_record(file_size_ - head_size - size, size);
    position_ = here;
    return record && record->size() == size ? record : std::nullopt;
}

} // namespace vantaro::core
