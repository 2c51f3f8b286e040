// A file that is open, with the system's errors as exceptions.
//
//     OpenFile file = OpenFile::open(real_system_calls(), path, O_RDWR);
//     std::string head = file.read(0, 10);
//     file.write(0, "ID3");
//
// One thread at a time. Everything that fails throws vantaro_io::exception_io_not_found,
// exception_io_denied, or exception_io with the system's text; none of them names the file.
#pragma once

#include "vantaro/common/file_identity.h"
#include "vantaro/safe_write/system_calls.h"

#include <string>
#include <string_view>

namespace vantaro::core {

class OpenFile {
public:
    /// Opens what is there.
    static OpenFile open(SystemCalls& calls, const std::string& path, int flags);
    /// Opens for reading and writing, under the file's own path, whatever links lead there.
    /// Throws exception_io_data when it is no regular file.
    static OpenFile open_for_change(SystemCalls& calls, const std::string& path);
    /// Takes over an open descriptor. Requires: descriptor >= 0.
    OpenFile(SystemCalls& calls, int descriptor, std::string path);
    ~OpenFile();
    OpenFile(OpenFile&& other) noexcept;
    OpenFile& operator=(OpenFile&& other) noexcept;

    const std::string& path() const { return path_; }
    int descriptor() const { return descriptor_; }
    SystemCalls& calls() const { return *calls_; }

    struct stat status() const;
    FileIdentity identity() const;
    /// Up to `size` bytes, fewer only at the end of the file.
    std::string read(std::uint64_t offset, std::size_t size) const;
    /// The same into a buffer; returns how many bytes there were.
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const;
    void write(std::uint64_t offset, std::string_view bytes) const;
    void truncate(std::uint64_t size) const;
    void shift(std::uint64_t offset, std::int64_t size) const;
    void sync() const;
    /// The time of the last change, in nanoseconds since 1970-01-01 UTC.
    void set_modified(std::int64_t nanoseconds) const;

private:
    void close();

    SystemCalls* calls_;
    int descriptor_;
    std::string path_;
};

} // namespace vantaro::core
