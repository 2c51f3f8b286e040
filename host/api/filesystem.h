// Files by location, through whichever registered file system serves it.
//
//     Ref<File> file = filesystem::g_open(path, OpenMode::read, abort);     // host/filesystem_access.h
//     read_exact(file->reader(), header, sizeof header, abort);
//
// Any thread; a File is used by one thread at a time.
#pragma once

#include "host/api/service.h"
#include "host/api/stream.h"
#include "host/api/text_sink.h"

namespace vantaro {

enum class OpenMode : std::uint32_t {
    /// An existing file, for reading.
    read = 0,
    /// A new or emptied file, for writing.
    write_new = 1,
};

class File : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{7A3C9E15-4D0C-4E5B-B0B1-9F6E2C8D7A35}");

    /// Both belong to the file. Reading a file opened for writing fails, and the other way round.
    virtual StreamReader& reader() = 0;
    virtual StreamWriter& writer() = 0;
    /// Stores the size in bytes; false when it is not known.
    virtual bool get_size(std::uint64_t& size, AbortFlag& abort) = 0;
    /// Ends writing: everything has reached the system. Closing without it keeps what was written, but errors
    /// that show late are lost.
    /// Throws: vantaro_io::exception_io.
    virtual void flush(AbortFlag& abort) = 0;

protected:
    ~File() = default;
};

class FileSystem : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{5C0E9D8B-1A64-4F4B-A7F9-0D3B7E2C6F18}");

    virtual bool serves(const char* path) = 0;
    virtual bool is_remote(const char* path) = 0;
    /// Sets how the path is shown to people; returns false when it declines.
    virtual bool get_display_path(const char* path, TextSink& out) = 0;
    /// Returns the file with one reference for the caller.
    /// Throws: vantaro_io::exception_io_not_found and other exceptions of vantaro_io.
    virtual File* open(const char* path, OpenMode mode, AbortFlag& abort) = 0;

protected:
    ~FileSystem() = default;
};

/// The extension for files that are stored somewhere, and looked for beside others.
class StoredFileSystem : public FileSystem {
public:
    using Inherits = FileSystem;
    static constexpr Guid class_guid = guid("{3F5B7C92-E1A8-4D06-9C74-0B6A2E8D51F3}");

    /// As open() for reading, but refuses what might keep its reader waiting: pipes, terminals, devices.
    virtual File* open_stored(const char* path, AbortFlag& abort) = 0;
    /// Sets the path of the file in the same folder whose name differs from the path's only in the case of
    /// letters; of several, the one whose bytes come first. Returns false when there is none.
    virtual bool find_ignoring_case(const char* path, TextSink& out) = 0;

protected:
    ~StoredFileSystem() = default;
};

} // namespace vantaro
