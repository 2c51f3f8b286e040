// The system calls with which files are written: one thin layer, so that a test can make each of them fail,
// write less than asked, or end the process right before it.
//
//     class FullDisk : public SystemCalls {
//         int fault(SystemCall call, std::size_t&) override { return call == SystemCall::write ? ENOSPC : 0;
//         }
//     };
//
// Every operation does what the call of its name does, and reports an error the same way: -1 and errno.
// Calls interrupted by a signal are made again. Any thread.
#pragma once

#include "vantaro/safe_write/file_system.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

namespace vantaro::core {

enum class SystemCall {
    open,
    lock,
    create,
    create_unnamed,
    read,
    write,
    copy,
    truncate,
    allocate,
    shift,
    sync,
    sync_file_system,
    link,
    rename,
    unlink,
    set_owner,
    set_mode,
    set_attribute,
    set_times,
};

class SystemCalls {
public:
    virtual ~SystemCalls() = default;

    int open(const std::string& path, int flags);
    /// Locks an open file for one owner at a time. EWOULDBLOCK: somebody else has it.
    int lock(int file);
    /// A new file, for its owner only, for reading and writing.
    int create(const std::string& path);
    /// The same without a name.
    int create_unnamed(const std::string& folder);
    ssize_t read_at(int file, void* buffer, std::size_t size, std::uint64_t offset);
    ssize_t write_at(int file, const void* buffer, std::size_t size, std::uint64_t offset);
    /// Appends up to `size` bytes of another file, from `offset`, without taking them through this process.
    ssize_t copy_range(int from, std::uint64_t offset, int to, std::size_t size);
    int truncate(int file, std::uint64_t size);
    /// Sees to it that the bytes up to `size` can be written. The size of the file stays.
    int allocate(int file, std::uint64_t offset, std::uint64_t size);
    /// Inserts (`size` > 0) or takes out (`size` < 0) whole blocks at `offset`.
    int shift(int file, std::uint64_t offset, std::int64_t size);
    /// The content of the file is on the medium.
    int sync(int file);
    /// Everything in the file's file system is on the medium.
    int sync_file_system(int file);
    /// Gives a file without a name one.
    int link_open_file(int file, const std::string& path);
    virtual int rename(const std::string& from, const std::string& to);
    int unlink(const std::string& path);
    int set_owner(int file, uid_t user, gid_t group);
    int set_mode(int file, mode_t mode);
    int set_attribute(int file, const char* name, const void* value, std::size_t size);
    int remove_attribute(int file, const char* name);
    int set_times(int file, const timespec times[2]);
    /// What the file system of an open file is like.
    virtual FileSystemTraits file_system(int file);

protected:
    /// Called before each call. An errno: the call fails with it and is not made. 0: it is made. `size` is
    /// what a write or copy is to move, and may be made less.
    virtual int fault(SystemCall, std::size_t& /*size*/) { return 0; }

private:
    bool fails(SystemCall call, std::size_t& size);
    bool fails(SystemCall call);
};

/// The system as it is.
SystemCalls& real_system_calls();

} // namespace vantaro::core
