// The file system service for the files of this machine, and reading their tags directly.
//
// Paths are bytes. Any thread; a file or reader is used by one thread at a time.
#pragma once

#include "host/api/filesystem.h"
#include "host/api/input.h"

namespace vantaro::core {

class LocalFileSystem final : public StaticService<FileSystem> {
public:
    /// Every path without a URL scheme.
    bool serves(const char* path) override;
    /// Whether the path lies on a network file system.
    bool is_remote(const char* path) override;
    bool get_display_path(const char* path, TextSink& out) override;
    File* open(const char* path, OpenMode mode, AbortFlag& abort) override;
};

class TagReader final : public StaticService<InputEntry> {
public:
    bool reads(const char* path) override;
    InputInfoReader* open_for_info_read(File* file_hint, const char* path, AbortFlag& abort) override;
};

} // namespace vantaro::core
