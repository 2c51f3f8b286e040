// A file that is open, with the system's errors as exceptions.
//
//     OpenFile file = OpenFile::open(real_system_calls(), path, O_RDWR);
//     std::string head = file.read(0, 10);
//     file.write(0, "ID3");
//
// One thread at a time. Everything that fails throws vantaro_io::exception_io_not_found,
// exception_io_denied, or exception_io with the system's text; none of them names the file.
#pragma once

#include "vantaro/common/byte_source.h"
#include "vantaro/common/file_identity.h"
#include "vantaro/safe_write/system_calls.h"

#include <string>
#include <string_view>

namespace vantaro::core {

/// Whether a file that somebody else has locked is waited for.
enum class Wait { no, a_moment };

class OpenFile final : public ByteSource {
public:
    /// Opens what is there.
    static OpenFile open(SystemCalls& calls, const std::string& path, int flags);
    /// Opens for reading and writing, under the file's own path, whatever links lead there, and locks it:
    /// until it is closed, nobody else who asks for the lock writes it. Waits a moment for whoever has it.
    /// Throws exception_io_data when it is no regular file, exception_io when it stays locked.
    static OpenFile open_for_change(SystemCalls& calls, const std::string& path);
    /// The same for reading only: as long as it is open, nobody is in the midst of writing it.
    static OpenFile open_undisturbed(SystemCalls& calls, const std::string& path);
    /// The same for a file of that very name: open_itself.
    static OpenFile open_locked(SystemCalls& calls, const std::string& path, int flags,
                                Wait wait = Wait::a_moment);
    /// Opens the regular file of that very name. Throws exception_io_data for anything else, links included.
    static OpenFile open_itself(SystemCalls& calls, const std::string& path, int flags);
    /// Takes over an open descriptor. Requires: descriptor >= 0.
    OpenFile(SystemCalls& calls, int descriptor, std::string path);
    ~OpenFile() override;
    OpenFile(OpenFile&& other) noexcept;
    OpenFile& operator=(OpenFile&& other) noexcept;

    const std::string& path() const override { return path_; }
    int descriptor() const { return descriptor_; }
    SystemCalls& calls() const { return *calls_; }

    /// Sees to it that nobody else who locks files writes this one. Where the file system has no locks, there
    /// is none. Throws exception_io when somebody else keeps it.
    void lock(Wait wait) const;
    /// Closes it early; nothing else may be asked of it then.
    void close();

    struct stat status() const;
    FileIdentity identity() const;
    /// Up to `size` bytes, fewer only at the end of the file.
    std::string read(std::uint64_t offset, std::size_t size) const;
    /// The same into a buffer; returns how many bytes there were.
    std::size_t read(std::uint64_t offset, char* buffer, std::size_t size) const override;
    /// As it is now.
    std::uint64_t size() const override { return identity().size; }
    void write(std::uint64_t offset, std::string_view bytes) const;
    void truncate(std::uint64_t size) const;
    void shift(std::uint64_t offset, std::int64_t size) const;
    void sync() const;
    /// The time of the last change, in nanoseconds since 1970-01-01 UTC.
    void set_modified(std::int64_t nanoseconds) const;

private:
    SystemCalls* calls_;
    int descriptor_;
    std::string path_;
};

/// Opens something by which the file system of `path` can be flushed: the folder, for the file should not
/// stay open, and only where the folder can be used and not be listed, the file.
OpenFile open_within(SystemCalls& calls, const std::string& path);

} // namespace vantaro::core
