// Small files that several processes read and replace as a whole: nobody sees half a file, and after a
// failure the old one is still there.
//
//     const FileLock lock(path + ".lock");
//     const std::optional<std::string> old_bytes = read_file(path);
//     replace_file(path, new_bytes);
//
// Any thread. Every failure is a vantaro_io::exception_io that names the file and the system's reason, and
// exception_io_denied when it is one of permissions.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantaro::core {

/// An open file, closed at the end.
class FileDescriptor {
public:
    /// Opens as open() does, closed in programs that are started.
    FileDescriptor(const std::string& path, int flags, unsigned mode = 0600);
    /// Takes over what is open, which is that file.
    FileDescriptor(int descriptor, std::string path);
    ~FileDescriptor();
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return descriptor_; }
    void write_all(std::string_view bytes);
    /// What was written is on the medium.
    void sync();

private:
    std::string path_;
    int descriptor_;
};

/// Held by one owner at a time, among processes and threads; waits for it. The file stays behind, since
/// removing it would let two owners lock two files of one name.
class FileLock {
public:
    explicit FileLock(const std::string& path);

private:
    FileDescriptor file_;
};

/// Where a chain of links from `path` ends, whether there is a file or not.
std::string follow_links(const std::string& path);

/// Makes the folder and those above it, for nobody else's eyes; fine when it exists.
void make_folder(const std::string& path);

/// The names in the folder are on the medium.
void sync_folder(const std::string& folder);

/// The bytes; nothing when there is no file.
std::optional<std::string> read_file(const std::string& path);

/// The file holds the bytes and they are on the medium, or everything is as before. Permissions stay as they
/// were; a new file is the user's alone. `path` is no link.
void replace_file(const std::string& path, std::string_view bytes);

/// A name beside `path` that was not taken, "<path>.<kind>-<YYYYMMDD-HHMMSS>" in local time, with "-2" and so
/// on behind when need be. An empty file of that name, the user's alone, keeps it.
std::string reserve_name(const std::string& path, std::string_view kind);

/// Copies the bytes to a reserved name and returns it. Nothing stays behind after a failure.
std::string set_copy_aside(const std::string& path, std::string_view kind, std::string_view bytes);

/// Renames the file to a reserved name and returns it.
std::string set_file_aside(const std::string& path, std::string_view kind);

} // namespace vantaro::core
