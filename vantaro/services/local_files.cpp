#include "vantaro/services/local_files.h"

#include "host/api/track_info_record.h"
#include "vantaro/common/file_identity.h"
#include "vantaro/common/path_text.h"
#include "vantaro/common/system_error.h"
#include "vantaro/locations/location_text.h"
#include "vantaro/tags/tag_file.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

namespace vantaro::core {

namespace {

/// Waits until something happens to the file, for a while (-1: as long as it takes) or until a flag is set.
/// Throws: vantaro_io::exception_aborted.
void wait(pollfd file, int milliseconds, const AbortFlag& abort, const AbortFlag& interrupt) {
    std::array<pollfd, 3> all{file, {abort.wait_handle(), POLLIN, 0}, {interrupt.wait_handle(), POLLIN, 0}};
    if (::poll(all.data(), all.size(), milliseconds) < 0 && errno != EINTR)
        throw_system_error(errno);
    abort.check();
    interrupt.check();
}

bool is_named_pipe(const struct stat& file, int descriptor) {
    struct statfs file_system;
    return S_ISFIFO(file.st_mode)
           && (::fstatfs(descriptor, &file_system) != 0
               || static_cast<unsigned long>(file_system.f_type) != PIPEFS_MAGIC);
}

class LocalFile final : public HeapService<File>, private StreamReader, private StreamWriter {
public:
    LocalFile(const char* path, OpenMode mode, const AbortFlag& abort, const AbortFlag& interrupt)
        : interrupt_(interrupt), descriptor_(open(path, mode, abort, interrupt)) {
        struct stat file;
        if (::fstat(descriptor_, &file) == 0)
            has_no_writer_yet_ = mode == OpenMode::read && is_named_pipe(file, descriptor_);
    }
    ~LocalFile() override { ::close(descriptor_); }

    StreamReader& reader() override { return *this; }
    StreamWriter& writer() override { return *this; }
    bool get_size(std::uint64_t& size, AbortFlag&) override {
        struct stat file;
        if (::fstat(descriptor_, &file) != 0)
            throw_system_error(errno);
        size = static_cast<std::uint64_t>(file.st_size);
        return S_ISREG(file.st_mode);
    }
    void flush(AbortFlag&) override {
        if (::fsync(descriptor_) != 0 && errno != EINVAL) // pipes and the like cannot be flushed
            throw_system_error(errno);
    }

private:
    /// A pipe without another end would keep open() waiting, and nothing would end that.
    static int open(const char* path, OpenMode mode, const AbortFlag& abort, const AbortFlag& interrupt) {
        const int flags = (mode == OpenMode::read ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC) | O_NONBLOCK;
        constexpr int moment = 20; // milliseconds
        while (true) {
            const int descriptor = ::open(path, flags | O_CLOEXEC, 0666);
            if (descriptor >= 0)
                return descriptor;
            const int error = errno;
            struct stat file;
            const bool has_no_reader = error == ENXIO && ::stat(path, &file) == 0 && S_ISFIFO(file.st_mode);
            if (error != EINTR && !has_no_reader)
                throw_system_error(error);
            wait({-1, 0, 0}, moment, abort, interrupt);
        }
    }
    void wait_for(short events, const AbortFlag& abort) const {
        wait({descriptor_, events, 0}, -1, abort, interrupt_);
    }

    std::size_t read(void* buffer, std::size_t count, AbortFlag& abort) override {
        std::size_t total = 0;
        while (total < count) {
            abort.check();
            // Until somebody has opened it for writing, reading finds the end.
            if (std::exchange(has_no_writer_yet_, false))
                wait_for(POLLIN, abort);
            const ssize_t got = ::read(descriptor_, static_cast<char*>(buffer) + total, count - total);
            if (got < 0 && errno == EAGAIN)
                wait_for(POLLIN, abort);
            else if (got < 0 && errno != EINTR)
                throw_system_error(errno);
            if (got == 0)
                break;
            total += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        }
        return total;
    }
    void write(const void* data, std::size_t count, AbortFlag& abort) override {
        for (std::size_t total = 0; total < count;) {
            abort.check();
            const ssize_t put = ::write(descriptor_, static_cast<const char*>(data) + total, count - total);
            if (put < 0 && errno == EAGAIN)
                wait_for(POLLOUT, abort);
            else if (put < 0 && errno != EINTR)
                throw_system_error(errno);
            total += static_cast<std::size_t>(std::max<ssize_t>(put, 0));
        }
    }

    const AbortFlag& interrupt_;
    int descriptor_;
    bool has_no_writer_yet_ = false;
};

class LocalInfoReader final : public HeapService<InputInfoReader> {
public:
    LocalInfoReader(const char* path, const TagOptions& options) : path_(path), options_(options) {}

    FileStats get_file_stats(AbortFlag& abort) override {
        abort.check();
        return FileIdentity::of(path_).stats();
    }
    void get_info(std::uint32_t subsong, TrackInfo& info, AbortFlag& abort) override {
        abort.check();
        if (subsong != 0)
            throw vantaro_io::exception_io_not_found();
        TrackInfoRecord record;
        read_tags(path_, record, &abort, options_);
        info.copy(record);
    }

private:
    const std::string path_;
    const TagOptions& options_;
};

} // namespace

bool LocalFileSystem::serves(const char* path) {
    return *path != '\0' && !is_url(path);
}

bool LocalFileSystem::is_remote(const char* path) {
    constexpr std::array<unsigned long, 9> network_file_systems{
        NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, SMB2_SUPER_MAGIC, CIFS_SUPER_MAGIC, CODA_SUPER_MAGIC,
        AFS_SUPER_MAGIC, AFS_FS_MAGIC,    V9FS_MAGIC,       CEPH_SUPER_MAGIC};
    struct statfs file_system;
    return ::statfs(path, &file_system) == 0
           && std::ranges::find(network_file_systems, static_cast<unsigned long>(file_system.f_type))
                  != network_file_systems.end();
}

bool LocalFileSystem::get_display_path(const char* path, TextSink& out) {
    set_text(out, path_as_text(path));
    return true;
}

bool LocalFileSystem::find_ignoring_case(const char* path, TextSink& out) {
    const std::optional<std::string> found = folder_names_.find_ignoring_case(path);
    if (found)
        set_text(out, *found);
    return found.has_value();
}

File* LocalFileSystem::open_stored(const char* path, AbortFlag& abort) {
    abort.check();
    auto file = make_service<LocalFile>(path, OpenMode::read, abort, interrupt_);
    std::uint64_t size = 0;
    if (!file->get_size(size, abort))
        throw vantaro_io::exception_io("It is no regular file");
    return file.detach();
}

File* LocalFileSystem::open(const char* path, OpenMode mode, AbortFlag& abort) {
    abort.check();
    return make_service<LocalFile>(path, mode, abort, interrupt_).detach();
}

bool TagReader::reads(const char*) {
    return true;
}

InputInfoReader* TagReader::open_for_info_read(File*, const char* path, AbortFlag& abort) {
    abort.check();
    return make_service<LocalInfoReader>(path, options_).detach();
}

} // namespace vantaro::core
