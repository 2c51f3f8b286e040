#include "vantaro/safe_write/replacement_file.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <vector>

namespace vantaro::core {

namespace {

constexpr std::size_t buffer_size = 1 << 20;
/// Shorter runs are copied through a buffer, several at once.
constexpr std::uint64_t long_run = 256 << 10;
constexpr const char* access_list = "system.posix_acl_access";
/// What NTFS keeps of a file beside its times of change (hidden and the like, and the time when it was made);
/// its driver does not list them.
constexpr std::array unlisted_attributes{"system.ntfs_attrib_be", "system.ntfs_crtime_be"};
/// The flags of a file that are somebody's choice ("chattr"), and not of those that forbid writing.
constexpr int chosen_flags = FS_SECRM_FL | FS_UNRM_FL | FS_COMPR_FL | FS_SYNC_FL | FS_NODUMP_FL
                             | FS_NOATIME_FL | FS_NOCOMP_FL | FS_JOURNAL_DATA_FL | FS_NOTAIL_FL | FS_NOCOW_FL
                             | FS_DAX_FL;

std::vector<std::string> attribute_names(int file) {
    std::string names(65536, '\0'); // the most that the kernel hands out
    const ssize_t size = ::flistxattr(file, names.data(), names.size());
    names.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    std::vector<std::string> result;
    for (std::size_t start = 0; start < names.size(); start = names.find('\0', start) + 1)
        result.emplace_back(names.c_str() + start);
    return result;
}

std::optional<std::string> attribute(int file, const std::string& name) {
    ssize_t size = ::fgetxattr(file, name.c_str(), nullptr, 0);
    if (size < 0)
        return std::nullopt;
    std::string value(static_cast<std::size_t>(size), '\0');
    size = ::fgetxattr(file, name.c_str(), value.data(), value.size());
    if (size < 0)
        return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    return value;
}

std::optional<int> flags_of(int file) {
    int flags = 0;
    return ::ioctl(file, FS_IOC_GETFLAGS, &flags) == 0 ? std::optional(flags) : std::nullopt;
}

/// Requires: the new file is empty; some flags can only be set then.
bool carry_flags(const OpenFile& from, const OpenFile& to) {
    const std::optional<int> wanted = flags_of(from.descriptor());
    if (!wanted)
        return true; // there are none in this file system
    const std::optional<int> present = flags_of(to.descriptor());
    if (!present || ((*wanted ^ *present) & chosen_flags) == 0)
        return present.has_value();
    int flags = (*present & ~chosen_flags) | (*wanted & chosen_flags);
    return ::ioctl(to.descriptor(), FS_IOC_SETFLAGS, &flags) == 0;
}

bool carry_attribute(const OpenFile& from, const OpenFile& to, const std::string& name, bool is_listed) {
    const std::optional<std::string> value = attribute(from.descriptor(), name);
    if (!value)
        return !is_listed;
    return attribute(to.descriptor(), name) == value
           || to.calls().set_attribute(to.descriptor(), name.c_str(), value->data(), value->size()) == 0;
}

/// Whether the new file, which is empty, has the old one's owner, permissions, access list, extended
/// attributes and flags now.
bool carry_attributes(const OpenFile& from, const OpenFile& to) {
    const struct stat old_status = from.status();
    const struct stat new_status = to.status();
    SystemCalls& calls = to.calls();
    if ((old_status.st_uid != new_status.st_uid || old_status.st_gid != new_status.st_gid)
        && calls.set_owner(to.descriptor(), old_status.st_uid, old_status.st_gid) != 0)
        return false;
    const std::vector<std::string> names = attribute_names(from.descriptor());
    for (const std::string& name : names)
        if (!carry_attribute(from, to, name, true))
            return false;
    for (const char* name : unlisted_attributes)
        if (!carry_attribute(from, to, name, false))
            return false;
    if (!carry_flags(from, to))
        return false;
    // The folder may give new files an access list of their own.
    if (std::ranges::find(names, access_list) == names.end() && attribute(to.descriptor(), access_list)
        && calls.remove_attribute(to.descriptor(), access_list) != 0)
        return false;
    constexpr mode_t permissions = 07777;
    return (to.status().st_mode & permissions) == (old_status.st_mode & permissions)
           || calls.set_mode(to.descriptor(), old_status.st_mode & permissions) == 0;
}

/// Puts the new content together, at the end of the new file.
class ContentWriter {
public:
    ContentWriter(const OpenFile& from, const OpenFile& to) : from_(from), to_(to) {}

    void add(std::string_view bytes) {
        buffer_ += bytes;
        if (buffer_.size() >= buffer_size)
            flush();
    }
    void add_old(std::uint64_t offset, std::uint64_t size) {
        if (size >= long_run && can_copy_) {
            flush();
            copy(offset, size);
        }
        while (size > 0) {
            const std::size_t part = std::min<std::uint64_t>(size, buffer_size);
            const std::string bytes = from_.read(offset, part);
            if (bytes.size() < part)
                throw vantaro_io::exception_io("The file has become shorter while it was being read");
            add(bytes);
            offset += part;
            size -= part;
        }
    }
    void flush() {
        to_.write(written_, buffer_);
        written_ += buffer_.size();
        buffer_.clear();
    }

private:
    /// Leaves over what the system does not copy by itself.
    void copy(std::uint64_t& offset, std::uint64_t& size) {
        if (::lseek(to_.descriptor(), static_cast<off_t>(written_), SEEK_SET) < 0)
            return;
        while (size > 0) {
            const ssize_t count = to_.calls().copy_range(from_.descriptor(), offset, to_.descriptor(), size);
            if (count < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EIO || errno == EFBIG))
                throw_system_error(errno);
            if (count <= 0) {
                can_copy_ = false;
                return;
            }
            offset += static_cast<std::uint64_t>(count);
            size -= static_cast<std::uint64_t>(count);
            written_ += static_cast<std::uint64_t>(count);
        }
    }

    const OpenFile& from_;
    const OpenFile& to_;
    std::string buffer_;
    std::uint64_t written_ = 0;
    bool can_copy_ = true;
};

void write_content(const OpenFile& from, const OpenFile& to, const FileEdit& edit) {
    ContentWriter content(from, to);
    std::uint64_t place = 0;
    for (const Splice& splice : edit.splices) {
        content.add_old(place, splice.offset - place);
        content.add(splice.bytes);
        place = splice.end();
    }
    content.add_old(place, edit.old_size - place);
    content.flush();
}

/// A file without a name gets one through /proc.
bool can_name_files_later() {
    static const bool result = ::access("/proc/self/fd", X_OK) == 0;
    return result;
}

bool is_refusal(int error) {
    return error == EACCES || error == EPERM || error == EROFS;
}

} // namespace

std::optional<Replacement> make_replacement(const OpenFile& file, const FileEdit& edit,
                                            const TemporaryNames& names, std::string& temporary) {
    if (file.status().st_nlink > 1)
        return std::nullopt;
    SystemCalls& calls = file.calls();
    const std::string folder = std::filesystem::path(file.path()).parent_path();
    const std::string name = names.next(folder);
    std::string standing;
    int descriptor = can_name_files_later() ? calls.create_unnamed(folder) : (errno = EOPNOTSUPP, -1);
    if (descriptor < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        names.announce(name);
        standing = name;
        descriptor = calls.create(name);
    }
    if (descriptor < 0) {
        if (is_refusal(errno))
            return std::nullopt;
        throw_system_error(errno);
    }
    Replacement replacement(OpenFile(calls, descriptor, name), standing, file.path());
    if (!carry_attributes(file, replacement.file()))
        return std::nullopt;
    write_content(file, replacement.file(), edit);
    temporary = name;
    return replacement;
}

} // namespace vantaro::core
