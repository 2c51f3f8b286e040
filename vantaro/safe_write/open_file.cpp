#include "vantaro/safe_write/open_file.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

namespace vantaro::core {

namespace {

/// For how long a lock is waited for. A run locks a file from reading its tags to writing them, which takes
/// longer than a moment only where the disk is slow.
constexpr std::chrono::seconds patience(3);
constexpr std::chrono::milliseconds between_tries(5);

void check(ssize_t result) {
    if (result < 0)
        throw_system_error(errno);
}

int open_descriptor(SystemCalls& calls, const std::string& path, int flags) {
    // A name with a NUL would open another file. Without waiting for the other end, should it be a pipe.
    return path.find('\0') == std::string::npos ? calls.open(path, flags | O_NONBLOCK) : (errno = ENOENT, -1);
}

std::string own_path(const std::string& path) {
    std::error_code error;
    std::string result = std::filesystem::canonical(path, error);
    if (error)
        throw_system_error(error.value());
    return result;
}

bool is_same_file(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

} // namespace

OpenFile OpenFile::open(SystemCalls& calls, const std::string& path, int flags) {
    const int descriptor = open_descriptor(calls, path, flags);
    check(descriptor);
    return {calls, descriptor, path};
}

OpenFile OpenFile::open_for_change(SystemCalls& calls, const std::string& path) {
    return open_locked(calls, own_path(path), O_RDWR);
}

OpenFile OpenFile::open_undisturbed(SystemCalls& calls, const std::string& path) {
    return open_locked(calls, own_path(path), O_RDONLY);
}

OpenFile OpenFile::open_locked(SystemCalls& calls, const std::string& path, int flags, Wait wait) {
    while (true) {
        OpenFile file = open_itself(calls, path, flags);
        file.lock(wait);
        // Whoever had the lock may have put another file in its place.
        struct stat named;
        check(::lstat(path.c_str(), &named));
        if (is_same_file(named, file.status()))
            return file;
    }
}

OpenFile OpenFile::open_itself(SystemCalls& calls, const std::string& path, int flags) {
    const int descriptor = open_descriptor(calls, path, flags | O_NOFOLLOW);
    if (descriptor < 0 && errno == ELOOP) // a link
        throw vantaro_io::exception_io_data("It is no regular file");
    check(descriptor);
    OpenFile file(calls, descriptor, path);
    if (!S_ISREG(file.status().st_mode))
        throw vantaro_io::exception_io_data("It is no regular file");
    return file;
}

OpenFile::OpenFile(SystemCalls& calls, int descriptor, std::string path)
    : calls_(&calls), descriptor_(descriptor), path_(std::move(path)) {}

OpenFile::~OpenFile() {
    close();
}

OpenFile::OpenFile(OpenFile&& other) noexcept
    : calls_(other.calls_), descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_)) {
}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept {
    if (this != &other) {
        close();
        calls_ = other.calls_;
        descriptor_ = std::exchange(other.descriptor_, -1);
        path_ = std::move(other.path_);
    }
    return *this;
}

void OpenFile::close() {
    if (descriptor_ >= 0)
        ::close(std::exchange(descriptor_, -1));
}

void OpenFile::lock(Wait wait) const {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (calls_->lock(descriptor_) != 0) {
        if (errno != EWOULDBLOCK)
            return; // a file system without locks
        if (wait == Wait::no || std::chrono::steady_clock::now() >= end)
            throw vantaro_io::exception_io("The file is being written by another program");
        std::this_thread::sleep_for(between_tries);
    }
}

struct stat OpenFile::status() const {
    struct stat result;
    check(::fstat(descriptor_, &result));
    return result;
}

FileIdentity OpenFile::identity() const {
    return FileIdentity::of(status());
}

std::string OpenFile::read(std::uint64_t offset, std::size_t size) const {
    std::string bytes(size, '\0');
    bytes.resize(read(offset, bytes.data(), size));
    return bytes;
}

std::size_t OpenFile::read(std::uint64_t offset, char* buffer, std::size_t size) const {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = calls_->read_at(descriptor_, buffer + done, size - done, offset + done);
        check(count);
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

void OpenFile::write(std::uint64_t offset, std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = calls_->write_at(descriptor_, bytes.data(), bytes.size(), offset);
        check(count);
        offset += static_cast<std::uint64_t>(count);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void OpenFile::truncate(std::uint64_t size) const {
    check(calls_->truncate(descriptor_, size));
}

void OpenFile::shift(std::uint64_t offset, std::int64_t size) const {
    check(calls_->shift(descriptor_, offset, size));
}

OpenFile open_within(SystemCalls& calls, const std::string& path) {
    try {
        return OpenFile::open(calls, std::filesystem::path(path).parent_path(), O_RDONLY | O_DIRECTORY);
    } catch (const vantaro_io::exception_io_denied&) {
        return OpenFile::open(calls, path, O_RDONLY);
    }
}

void OpenFile::sync() const {
    check(calls_->sync(descriptor_));
}

void OpenFile::set_modified(std::int64_t nanoseconds) const {
    constexpr std::int64_t second = 1'000'000'000;
    std::int64_t rest = nanoseconds % second;
    if (rest < 0)
        rest += second;
    // Some file systems in user space take a call that leaves one of the times out for done, and do nothing.
    const timespec times[2] = {status().st_atim, {(nanoseconds - rest) / second, rest}};
    check(calls_->set_times(descriptor_, times));
}

} // namespace vantaro::core
