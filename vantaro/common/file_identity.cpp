#include "vantaro/common/file_identity.h"

#include "vantaro/common/system_error.h"

#include <sys/stat.h>

#include <cerrno>

namespace vantaro::core {

FileIdentity FileIdentity::of(const std::string& path) {
    struct stat file;
    if (::stat(path.c_str(), &file) != 0)
        throw_system_error(errno);
    return of(file);
}

FileIdentity FileIdentity::of(const struct ::stat& file) {
    constexpr std::int64_t second = 1'000'000'000;
    return {file.st_dev, file.st_ino, static_cast<std::uint64_t>(file.st_size),
            file.st_mtim.tv_sec * second + file.st_mtim.tv_nsec};
}

FileStats FileIdentity::stats() const {
    constexpr std::int64_t tick = 100; // nanoseconds
    constexpr std::int64_t ticks_from_1601_to_1970 = 116'444'736'000'000'000;
    return {size, static_cast<std::uint64_t>(modified / tick + ticks_from_1601_to_1970)};
}

} // namespace vantaro::core
