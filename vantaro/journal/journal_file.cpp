#include "vantaro/journal/journal_file.h"

#include "host/api/exceptions.h"
#include "vantaro/common/checksum.h"
#include "vantaro/common/system_error.h"
#include "vantaro/journal/record.h"

#include <QtEndian>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
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

Head read_head(std::string_view bytes) {
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

/// Of the whole file, for whoever has it open. Unlike flock's, whether it is there can be asked without
/// taking it, and so without making a recovery believe that somebody is at the journal.
struct flock whole_file() {
    struct flock result {};
    result.l_type = F_WRLCK;
    result.l_whence = SEEK_SET;
    return result;
}

bool lock(const OpenFile& file) {
    struct flock request = whole_file();
    if (::fcntl(file.descriptor(), F_OFD_SETLK, &request) == 0)
        return true;
    if (errno != EAGAIN && errno != EACCES)
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
        } catch (const std::exception&) {
            calls.unlink(path);
            throw;
        }
        journal.size_ = mark.size();
        return journal;
    });
}

std::optional<JournalFile> JournalFile::take_over(SystemCalls& calls, const std::string& path) {
    return naming(path, [&]() -> std::optional<JournalFile> {
        JournalFile journal(open_journal(calls, path, O_RDWR));
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
        } catch (const std::exception&) {
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
        } catch (const std::exception&) {
            is_broken_ = true; // what was lost, nobody can tell
            throw;
        }
    });
}

OpenFile open_journal(SystemCalls& calls, const std::string& path, int flags) {
    OpenFile file = OpenFile::open_itself(calls, path, flags);
    const struct stat status = file.status();
    if (status.st_uid != ::geteuid() || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        throw vantaro_io::exception_io_denied(
            "It belongs to another user, or others can write to it, so that it is not used");
    return file;
}

bool is_abandoned(const OpenFile& journal) {
    struct flock request = whole_file();
    return ::fcntl(journal.descriptor(), F_OFD_GETLK, &request) == 0 && request.l_type == F_UNLCK;
}

JournalReader::JournalReader(const OpenFile& file)
    : file_(file), file_size_(file.identity().size), position_(mark.size()), start_(mark.size()) {
    if (file.read(0, mark.size()) != mark)
        throw vantaro_io::exception_io_data(file.path() + " is no journal of a run");
}

std::optional<JournalReader::Found> JournalReader::read_record(std::uint64_t position,
                                                               std::size_t most) const {
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
    return Found{std::move(record), position + head_size + head.size};
}

/// The first place from `from` on where a whole record starts.
std::optional<std::uint64_t> JournalReader::find_record(std::uint64_t from) const {
    constexpr std::size_t window = 1 << 20;
    std::uint64_t work = 256 << 20; // bytes to compute checksums of, at most: a hostile journal takes longer
    for (std::uint64_t start = from; start + head_size < file_size_; start += window) {
        const std::string bytes =
            file_.read(start, std::min<std::uint64_t>(window + head_size, file_size_ - start));
        for (std::size_t i = 0; i < window && i + head_size < bytes.size(); ++i) {
            const std::uint64_t size = read_head(std::string_view(bytes).substr(i, head_size)).size;
            if (size == 0 || size > file_size_ - (start + i) - head_size
                || kind_of({&bytes[i + head_size], 1}) == std::variant_npos)
                continue;
            if (size > work)
                return std::nullopt;
            work -= size;
            if (read_record(start + i, SIZE_MAX))
                return start + i;
        }
    }
    return std::nullopt;
}

std::optional<std::string> JournalReader::next() {
    return next_head(SIZE_MAX);
}

std::optional<std::string> JournalReader::next_head(std::size_t most) {
    std::uint64_t position = position_;
    std::optional<Found> found = read_record(position, most);
    if (!found) {
        const std::optional<std::uint64_t> next = find_record(position + 1);
        if (!next)
            return std::nullopt;
        damaged_.push_back(position);
        position = *next;
        found = read_record(position, most);
        if (!found)
            return std::nullopt;
    }
    start_ = position;
    position_ = found->end;
    return std::move(found->bytes);
}

std::string JournalReader::head_at(std::uint64_t position, std::size_t most) const {
    return file_.read(position + head_size, most);
}

std::optional<std::string> JournalReader::last(std::size_t size) {
    if (file_size_ < mark.size() + head_size + size)
        return std::nullopt;
    std::optional<Found> found = read_record(file_size_ - head_size - size, size);
    if (!found || found->bytes.size() != size)
        return std::nullopt;
    return std::move(found->bytes);
}

} // namespace vantaro::core
