#include "vantaro/safe_write/settle.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace vantaro::core {

namespace {

namespace fs = std::filesystem;

bool is_missing(const std::string& path) {
    struct stat found;
    if (::lstat(path.c_str(), &found) == 0)
        return false;
    if (errno != ENOENT && errno != ENOTDIR)
        throw_system_error(errno);
    return true;
}

/// Whether the file is gone although its file system is there. A medium that is missing leaves at most the
/// empty folder behind that it was mounted on; device numbers can change with each mounting.
bool is_deleted(const FileChange& change) {
    fs::path folder = fs::path(change.path).parent_path();
    std::error_code error;
    if (fs::is_directory(folder, error) && !fs::is_empty(folder, error) && !error)
        return true;
    struct stat found;
    while (::stat(folder.c_str(), &found) != 0) {
        if (folder == folder.parent_path())
            return false;
        folder = folder.parent_path();
    }
    return found.st_dev == change.before.device;
}

/// Whether the temporary file is the file as it is to be.
bool is_whole_under_temporary_name(SystemCalls& calls, const FileChange& change) {
    if (change.temporary.empty() || is_missing(change.temporary))
        return false;
    const OpenFile file = OpenFile::open_itself(calls, change.temporary, O_RDONLY);
    return holds_new_bytes(file, change) && holds_kept_parts(file, change, true);
}

FileState settle_missing(SystemCalls& calls, const FileChange& change) {
    if (is_whole_under_temporary_name(calls, change)) {
        if (calls.rename(change.temporary, change.path) != 0)
            throw_system_error(errno);
        return FileState::as_changed;
    }
    if (is_missing(change.path) && !is_deleted(change))
        throw vantaro_io::exception_io_not_found();
    return FileState::foreign;
}

/// To its new bytes when only they are missing, else to its old ones.
FileState finish_or_put_back(const OpenFile& file, const FileChange& change) {
    if (change.method == WriteMethod::shift && file.identity().size == change.new_size) {
        try {
            write_new_bytes(file, change);
            return FileState::as_changed;
        } catch (const std::exception&) {
            // No room for the new blocks, perhaps: back, then.
        }
    }
    put_back(file, change);
    return FileState::as_before;
}

} // namespace

FileState settle(SystemCalls& calls, const FileChange& change, Wait wait) {
    if (is_missing(change.path))
        return settle_missing(calls, change);
    const bool is_written = change.method != WriteMethod::replace;
    const OpenFile file = OpenFile::open_locked(calls, change.path, is_written ? O_RDWR : O_RDONLY, wait);
    if (!is_written && file.identity().size == 0 && change.before.size > 0)
        return settle_missing(calls, change); // a name that was left without its bytes
    FileState state = examine(file, change);
    if (state == FileState::between)
        state = finish_or_put_back(file, change);
    file.sync(); // what is seen here may still be in memory only
    const bool may_be_the_last =
        state == FileState::foreign && calls.file_system(file.descriptor()).without_order;
    if (!change.temporary.empty() && !may_be_the_last && !remove_temporary(calls, change.temporary))
        throw_system_error(errno);
    return state;
}

bool remove_temporary(SystemCalls& calls, const std::string& path) {
    struct stat found;
    if (::lstat(path.c_str(), &found) != 0)
        return errno == ENOENT || errno == ENOTDIR;
    errno = EPERM;
    const fs::path name = path;
    return S_ISREG(found.st_mode) && name.is_absolute()
           && name.filename().string().starts_with(temporary_prefix) && calls.unlink(path) == 0;
}

} // namespace vantaro::core
