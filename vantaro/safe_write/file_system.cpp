#include "vantaro/safe_write/file_system.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>

namespace vantaro::core {

namespace {

/// "ext2" or the like, as the system calls what is mounted from the device; empty when it does not tell.
std::string mounted_type(dev_t device) {
    const std::string wanted = std::to_string(major(device)) + ':' + std::to_string(minor(device));
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream words(line);
        std::string word;
        words >> word >> word >> word;
        const std::size_t separator = line.find(" - ");
        if (word != wanted || separator == std::string::npos)
            continue;
        std::istringstream(line.substr(separator + 3)) >> word;
        return word;
    }
    return {};
}

/// Whether the file system of an ext4 device keeps a journal of its own.
bool has_journal(dev_t device) {
    std::error_code error;
    const std::filesystem::path block_device = std::filesystem::read_symlink(
        "/sys/dev/block/" + std::to_string(major(device)) + ':' + std::to_string(minor(device)), error);
    std::string task; // which writes the journal
    std::ifstream("/sys/fs/ext4/" + block_device.filename().string() + "/journal_task") >> task;
    return task != "<none>";
}

/// Of ext2, ext3, or ext4.
FileSystemTraits extended_traits(dev_t device) {
    FileSystemTraits result;
    result.shifts = mounted_type(device) != "ext2";
    result.replaces_safely = result.shifts && has_journal(device);
    result.without_order = !result.replaces_safely;
    return result;
}

/// The same, found out once for a file system.
FileSystemTraits extended_traits(int descriptor, const struct statfs& system) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0)
        return {};
    std::pair<dev_t, std::uint64_t> key{status.st_dev, 0};
    static_assert(sizeof system.f_fsid == sizeof key.second);
    std::memcpy(&key.second, &system.f_fsid, sizeof key.second);
    static std::mutex mutex; // guards known
    static std::map<std::pair<dev_t, std::uint64_t>, FileSystemTraits> known;
    const std::lock_guard lock(mutex);
    const auto found = known.find(key);
    return found != known.end() ? found->second
                                : known.emplace(key, extended_traits(key.first)).first->second;
}

} // namespace

FileSystemTraits FileSystemTraits::of(int descriptor) {
    FileSystemTraits result;
    struct statfs system {};
    if (::fstatfs(descriptor, &system) != 0)
        return result;
    switch (static_cast<std::uint32_t>(system.f_type)) {
    case CIFS_SUPER_MAGIC:
    case SMB2_SUPER_MAGIC:
    case SMB_SUPER_MAGIC:
        result.replaces_safely = false;
        result.never_replaces = true;
        result.is_remote = true;
        break;
    case MSDOS_SUPER_MAGIC:
    case EXFAT_SUPER_MAGIC:
        result.replaces_safely = false;
        result.without_order = true;
        break;
    case EXT4_SUPER_MAGIC: // of ext2 and ext3, too
        return extended_traits(descriptor, system);
    case NFS_SUPER_MAGIC:
    case FUSE_SUPER_MAGIC:
    case V9FS_MAGIC:
    case AFS_SUPER_MAGIC:
    case AFS_FS_MAGIC:
    case CODA_SUPER_MAGIC:
    case CEPH_SUPER_MAGIC:
        result.is_remote = true;
        break;
    default:
        break;
    }
    return result;
}

} // namespace vantaro::core
