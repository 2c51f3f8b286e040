#include "host/filesystem_access.h"

#include "host/shared/failure.h"

namespace quorvex {

using namespace vantaro;

Ref<FileSystem> filesystem::g_find(const char* path) {
    const std::size_t count = service_count(FileSystem::class_guid);
    for (std::size_t index = 0; index < count; ++index) {
        Ref<FileSystem> candidate = create_service<FileSystem>(index);
        if (candidate->serves(path))
            return candidate;
    }
    return {};
}

Ref<File> filesystem::g_open(const char* path, OpenMode mode, AbortFlag& abort) {
    uCallStackTracker marker("opening a file");
    const Ref<FileSystem> found = g_find(path);
    if (!found)
        throw vantaro_io::exception_io_no_handler_for_path();
    return Ref<File>::adopt(found->open(path, mode, abort));
}

Ref<File> filesystem::g_open_stored(const char* path, AbortFlag& abort) {
    const Ref<FileSystem> found = g_find(path);
    if (const auto stored = found ? query_interface<StoredFileSystem>(*found) : Ref<StoredFileSystem>()) {
        uCallStackTracker marker("opening a file");
        return Ref<File>::adopt(stored->open_stored(path, abort));
    }
    return g_open(path, OpenMode::read, abort);
}

std::optional<std::string> filesystem::g_find_ignoring_case(const char* path) {
    const Ref<FileSystem> found = g_find(path);
    const auto stored = found ? query_interface<StoredFileSystem>(*found) : Ref<StoredFileSystem>();
    StringSink other;
    return stored && stored->find_ignoring_case(path, other) ? std::optional(other.take()) : std::nullopt;
}

std::string filesystem::g_get_display_path(const char* path) {
    StringSink display;
    const Ref<FileSystem> found = g_find(path);
    return found && found->get_display_path(path, display) ? display.take() : path;
}

int NeverAbort::wait_handle() const noexcept {
    return GetInfiniteWaitEvent();
}

} // namespace quorvex
