#include "vantaro/safe_write/system_calls.h"

#include <fcntl.h>
#include <linux/falloc.h>
#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace vantaro::core {

namespace {

constexpr mode_t owner_only = 0600;

template <class Call>
auto uninterrupted(const Call& call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace

bool SystemCalls::fails(SystemCall call, std::size_t& size) {
    const int error = fault(call, size);
    if (error != 0)
        errno = error;
    return error != 0;
}

bool SystemCalls::fails(SystemCall call) {
    std::size_t size = 0;
    return fails(call, size);
}

int SystemCalls::open(const std::string& path, int flags) {
    if (fails(SystemCall::open))
        return -1;
    return uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC); });
}

int SystemCalls::lock(int file) {
    if (fails(SystemCall::lock))
        return -1;
    return uninterrupted([&] { return ::flock(file, LOCK_EX | LOCK_NB); });
}

int SystemCalls::create(const std::string& path) {
    if (fails(SystemCall::create))
        return -1;
    return uninterrupted(
        [&] { return ::open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, owner_only); });
}

int SystemCalls::create_unnamed(const std::string& folder) {
    if (fails(SystemCall::create_unnamed))
        return -1;
    return uninterrupted([&] { return ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, owner_only); });
}

ssize_t SystemCalls::read_at(int file, void* buffer, std::size_t size, std::uint64_t offset) {
    if (fails(SystemCall::read))
        return -1;
    return uninterrupted([&] { return ::pread(file, buffer, size, static_cast<off_t>(offset)); });
}

ssize_t SystemCalls::write_at(int file, const void* buffer, std::size_t size, std::uint64_t offset) {
    if (fails(SystemCall::write, size))
        return -1;
    return uninterrupted([&] { return ::pwrite(file, buffer, size, static_cast<off_t>(offset)); });
}

ssize_t SystemCalls::copy_range(int from, std::uint64_t offset, int to, std::size_t size) {
    if (fails(SystemCall::copy, size))
        return -1;
    auto place = static_cast<off64_t>(offset);
    return uninterrupted([&] { return ::copy_file_range(from, &place, to, nullptr, size, 0); });
}

int SystemCalls::truncate(int file, std::uint64_t size) {
    if (fails(SystemCall::truncate))
        return -1;
    return uninterrupted([&] { return ::ftruncate(file, static_cast<off_t>(size)); });
}

int SystemCalls::allocate(int file, std::uint64_t offset, std::uint64_t size) {
    if (fails(SystemCall::allocate))
        return -1;
    return uninterrupted([&] {
        return ::fallocate(file, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset), static_cast<off_t>(size));
    });
}

int SystemCalls::shift(int file, std::uint64_t offset, std::int64_t size) {
    if (fails(SystemCall::shift))
        return -1;
    const int mode = size > 0 ? FALLOC_FL_INSERT_RANGE : FALLOC_FL_COLLAPSE_RANGE;
    // Not made again when interrupted: it could have been done.
    return ::fallocate(file, mode, static_cast<off_t>(offset), static_cast<off_t>(size > 0 ? size : -size));
}

int SystemCalls::sync(int file) {
    if (fails(SystemCall::sync))
        return -1;
    return uninterrupted([&] { return ::fdatasync(file); });
}

int SystemCalls::sync_file_system(int file) {
    if (fails(SystemCall::sync_file_system))
        return -1;
    return uninterrupted([&] { return ::syncfs(file); });
}

int SystemCalls::link_open_file(int file, const std::string& path) {
    if (fails(SystemCall::link))
        return -1;
    const std::string open_file = "/proc/self/fd/" + std::to_string(file);
    return ::linkat(AT_FDCWD, open_file.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW);
}

int SystemCalls::rename(const std::string& from, const std::string& to) {
    return fails(SystemCall::rename) ? -1 : std::rename(from.c_str(), to.c_str());
}

int SystemCalls::unlink(const std::string& path) {
    return fails(SystemCall::unlink) ? -1 : ::unlink(path.c_str());
}

int SystemCalls::set_owner(int file, uid_t user, gid_t group) {
    return fails(SystemCall::set_owner) ? -1 : ::fchown(file, user, group);
}

int SystemCalls::set_mode(int file, mode_t mode) {
    return fails(SystemCall::set_mode) ? -1 : ::fchmod(file, mode);
}

int SystemCalls::set_attribute(int file, const char* name, const void* value, std::size_t size) {
    return fails(SystemCall::set_attribute) ? -1 : ::fsetxattr(file, name, value, size, 0);
}

int SystemCalls::remove_attribute(int file, const char* name) {
    return fails(SystemCall::set_attribute) ? -1 : ::fremovexattr(file, name);
}

int SystemCalls::set_times(int file, const timespec times[2]) {
    return fails(SystemCall::set_times) ? -1 : ::futimens(file, times);
}

FileSystemTraits SystemCalls::file_system(int file) {
    return FileSystemTraits::of(file);
}

SystemCalls& real_system_calls() {
    static SystemCalls calls;
    return calls;
}

} // namespace vantaro::core
