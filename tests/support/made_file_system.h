// File systems that behave as a test wants them to, whatever the test's folder lies on.
#pragma once

#include "vantaro/safe_write/system_calls.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <filesystem>

namespace vantaro::test {

/// The system, with one kind of file system.
class MadeFileSystem : public core::SystemCalls {
public:
    explicit MadeFileSystem(const core::FileSystemTraits& traits) : traits_(traits) {}
    core::FileSystemTraits file_system(int) override { return traits_; }

private:
    const core::FileSystemTraits traits_;
};

/// As most disks have: with a journal, also where the machine's own goes without. Blocks are shifted where
/// they can be.
inline core::FileSystemTraits common_traits() {
    struct statfs system {};
    core::FileSystemTraits traits;
    traits.shifts = ::statfs(std::filesystem::temp_directory_path().c_str(), &system) == 0
                    && system.f_type == EXT4_SUPER_MAGIC && system.f_bsize == 4096;
    return traits;
}

inline core::SystemCalls& common_system() {
    static MadeFileSystem calls(common_traits());
    return calls;
}

} // namespace vantaro::test
