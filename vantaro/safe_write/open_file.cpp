#include "vantaro/safe_write/open_file.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace vantaro::core {

namespace {

void check(ssize_t result) {
    if (result < 0)
        throw_system_error(errno);
}

} // namespace

OpenFile OpenFile::open(SystemCalls& calls, const std::string& path, int flags) {
    // A name with a NUL would open another file. Without waiting for the other end, should it be a pipe.
    const int descriptor =
        path.find('\0') == std::string::npos ? calls.open(path, flags | O_NONBLOCK) : (errno = ENOENT, -1);
    check(descriptor);
    return {calls, descriptor, path};
}

OpenFile OpenFile::open_for_change(SystemCalls& calls, const std::string& path) {
    std::error_code error;
    const std::string own_path = std::filesystem::canonical(path, error);
    if (error)
        throw_system_error(error.value());
    OpenFile file = open(calls, own_path, O_RDWR);
    if (!S_ISREG(file.status().st_mode))
        throw vantaro_io::exception_io_data();
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
        ::close(descriptor_);
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

void OpenFile::sync() const {
    check(calls_->sync(descriptor_));
}

void OpenFile::set_modified(std::int64_t nanoseconds) const {
    constexpr std::int64_t second = 1'000'000'000;
    std::int64_t rest = nanoseconds % second;
    if (rest < 0)
        rest += second;
    const timespec times[2] = {{0, UTIME_OMIT}, {(nanoseconds - rest) / second, rest}};
    check(calls_->set_times(descriptor_, times));
}

} // namespace vantaro::core
