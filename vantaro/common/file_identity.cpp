#include "vantaro/common/file_identity.h"

#include "vantaro/common/system_error.h"

#include <sys/stat.h>

#include <cerrno>

namespace vantaro::core {

namespace {

struct stat status_of(const std::string& path) {
    struct stat file;
    if (::stat(path.c_str(), &file) != 0)
        throw_system_error(errno);
    return file;
}

std::int64_t nanoseconds(const timespec& time) {
    constexpr std::int64_t second = 1'000'000'000;
    return time.tv_sec * second + time.tv_nsec;
}

} // namespace

FileIdentity FileIdentity::of(const std::string& path) {
    return of(status_of(path));
}

FileIdentity FileIdentity::of(const struct ::stat& file) {
    return {file.st_dev, file.st_ino, static_cast<std::uint64_t>(file.st_size), nanoseconds(file.st_mtim)};
}

FileStatus FileStatus::of(const std::string& path) {
    return of(status_of(path));
}

FileStatus FileStatus::of(const struct ::stat& file) {
    return {FileIdentity::of(file), nanoseconds(file.st_ctim)};
}

FileStats FileIdentity::stats() const {
    constexpr std::int64_t tick = 100; // nanoseconds
    constexpr std::int64_t ticks_from_1601_to_1970 = 116'444'736'000'000'000;
    return {size, static_cast<std::uint64_t>(modified / tick + ticks_from_1601_to_1970)};
}

} // namespace vantaro::core
