#include "vantaro/common/file_source.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace vantaro::core {

namespace {

int open_file(const std::string& path) {
    if (path.find('\0') != std::string::npos) // such a name would open another file
        throw vantaro_io::exception_io_not_found();
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0 && errno == ENXIO) // a socket
        throw vantaro_io::exception_io_data("It is no regular file");
    if (descriptor < 0)
        throw_system_error(errno);
    return descriptor;
}

} // namespace

FileSource FileSource::open(const std::string& path) {
    const int descriptor = open_file(path);
    struct stat status = {};
    const int error = ::fstat(descriptor, &status) != 0 ? errno : S_ISDIR(status.st_mode) ? EISDIR : 0;
    if (error != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        if (error != 0)
            throw_system_error(error);
        throw vantaro_io::exception_io_data("It is no regular file");
    }
    return {path, descriptor, static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0))};
}

FileSource::~FileSource() {
    ::close(descriptor_);
}

std::size_t FileSource::read(std::uint64_t offset, char* buffer, std::size_t size) const {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count =
            ::pread(descriptor_, buffer + done, size - done, static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw_system_error(errno);
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

} // namespace vantaro::core
