#include "vantaro/tags/read_stream.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"

#include <tbytevector.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

namespace vantaro::core::tags {

namespace {

// Tags are read in many small pieces.
constexpr std::uint64_t block_size = 8192;

int open_file(const std::string& path) {
    if (path.find('\0') != std::string::npos) // such a name would open another file
        throw vantaro_io::exception_io_not_found();
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0 && errno == ENXIO) // a socket
        throw vantaro_io::exception_io_data();
    if (descriptor < 0)
        throw_system_error(errno);
    return descriptor;
}

} // namespace

ReadStream ReadStream::open(const std::string& path) {
    const int descriptor = open_file(path);
    struct stat status = {};
    const int error = ::fstat(descriptor, &status) != 0 ? errno : S_ISDIR(status.st_mode) ? EISDIR : 0;
    if (error != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        if (error != 0)
            throw_system_error(error);
        throw vantaro_io::exception_io_data();
    }
    return {path, descriptor, static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0))};
}

ReadStream::ReadStream(std::string path, int descriptor, std::uint64_t size)
    : path_(std::move(path)), descriptor_(descriptor), size_(size) {}

ReadStream::~ReadStream() {
    ::close(descriptor_);
}

void ReadStream::check() const {
    if (failure_)
        std::rethrow_exception(failure_);
}

/// Returns how much there was.
std::size_t ReadStream::read(std::uint64_t start, char* buffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count =
            ::pread(descriptor_, buffer + done, size - done, static_cast<off_t>(start + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            try {
                throw_system_error(errno);
            } catch (...) {
                failure_ = std::current_exception();
            }
        }
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

TagLib::ByteVector ReadStream::readBlock(unsigned long length) {
    if (length == 0 || position_ >= size_)
        return {};
    const std::uint64_t most = std::min<std::uint64_t>(size_ - position_, std::numeric_limits<int>::max());
    TagLib::ByteVector data(static_cast<unsigned>(std::min<std::uint64_t>(length, most)));
    std::size_t done = 0;
    if (data.size() >= block_size) {
        done = read(position_, data.data(), data.size());
    } else {
        while (done < data.size()) {
            const std::uint64_t place = position_ + done;
            const std::uint64_t start = place / block_size * block_size;
            if (start != block_start_ || place - start >= block_.size()) {
                block_.resize(block_size);
                block_.resize(read(start, block_.data(), block_size));
                block_start_ = start;
                if (place - start >= block_.size())
                    break;
            }
            done += block_.copy(data.data() + done, data.size() - done, place - start);
        }
    }
    data.resize(static_cast<unsigned>(done));
    position_ += done;
    return data;
}

void ReadStream::seek(long offset, Position position) {
    const long base = position == Current ? tell() : position == End ? length() : 0;
    position_ = static_cast<std::uint64_t>(std::max(0L, base + offset));
}

} // namespace vantaro::core::tags
