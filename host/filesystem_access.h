// Files by path, through the host's file systems.
//
//     Ref<vantaro::File> file = filesystem::g_open(path, vantaro::OpenMode::read, abort);
//
// Any thread.
#pragma once

#include "host/access.h"
#include "host/api/filesystem.h"

#include <optional>
#include <string>

namespace quorvex {

class filesystem {
public:
    /// The file system that serves the path, or nothing.
    static Ref<vantaro::FileSystem> g_find(const char* path);
    /// Throws: vantaro_io::exception_io_no_handler_for_path, and what FileSystem::open throws.
    static Ref<vantaro::File> g_open(const char* path, vantaro::OpenMode mode, vantaro::AbortFlag& abort);
    /// For reading, without waiting for anybody: what is no stored file is refused, as far as the file system
    /// tells. Throws: as g_open.
    static Ref<vantaro::File> g_open_stored(const char* path, vantaro::AbortFlag& abort);
    /// The file beside the path's place whose name differs only in the case of letters, if the file system
    /// tells.
    static std::optional<std::string> g_find_ignoring_case(const char* path);
    /// How the path is shown to people; the path itself when no file system serves it or the one that does
    /// declines.
    static std::string g_get_display_path(const char* path);
};

/// For calls that nobody will want to abort.
class NeverAbort final : public vantaro::AbortFlag {
public:
    bool is_aborting() const noexcept override { return false; }
    int wait_handle() const noexcept override;
};

} // namespace quorvex
