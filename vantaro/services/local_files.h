// The file system service for the files of this machine, and reading their tags directly.
//
// Paths are bytes. Any thread; a file or reader is used by one thread at a time.
#pragma once

#include "host/api/filesystem.h"
#include "host/api/input.h"
#include "vantaro/services/folder_names.h"
#include "vantaro/tags/tag_options.h"

namespace vantaro::core {

class LocalFileSystem final : public StaticService<StoredFileSystem> {
public:
    /// `interrupt`, which outlives the object and its files, ends waiting for the other end of a pipe,
    /// whatever the caller's own flag says.
    explicit LocalFileSystem(const AbortFlag& interrupt) : interrupt_(interrupt) {}

    /// Every path that does not begin with a URL scheme.
    bool serves(const char* path) override;
    /// Whether the path lies on a network file system.
    bool is_remote(const char* path) override;
    /// The path as a text (vantaro/common/path_text.h).
    bool get_display_path(const char* path, TextSink& out) override;
    /// A file that is no regular one (a pipe, a terminal) may keep its reader or writer waiting.
    File* open(const char* path, OpenMode mode, AbortFlag& abort) override;
    File* open_stored(const char* path, AbortFlag& abort) override;
    bool find_ignoring_case(const char* path, TextSink& out) override;

private:
    const AbortFlag& interrupt_;
    FolderNames folder_names_;
};

class TagReader final : public StaticService<InputEntry> {
public:
    /// `options`, which outlive the object and its readers, are those that the files are written with.
    explicit TagReader(const TagOptions& options) : options_(options) {}

    bool reads(const char* path) override;
    InputInfoReader* open_for_info_read(File* file_hint, const char* path, AbortFlag& abort) override;

private:
    const TagOptions& options_;
};

} // namespace vantaro::core
