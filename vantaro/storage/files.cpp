#include "vantaro/storage/files.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

namespace vantaro::core {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& path, int error = errno) {
    throw_system_error(error, path);
}

std::string folder_of(const std::string& path) {
    std::string folder = fs::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// A file that goes away unless it is kept.
class Provisional {
public:
    explicit Provisional(std::string path) : path_(std::move(path)) {}
    ~Provisional() {
        if (!path_.empty())
            ::unlink(path_.c_str());
    }
    Provisional(const Provisional&) = delete;
    Provisional& operator=(const Provisional&) = delete;
    const std::string& path() const { return path_; }
    std::string keep() { return std::exchange(path_, {}); }

private:
    std::string path_;
};

std::string local_time_stamp() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &parts)};
}

} // namespace

FileDescriptor::FileDescriptor(const std::string& path, int flags, unsigned mode)
    : FileDescriptor(::open(path.c_str(), flags | O_CLOEXEC, mode), path) {}

FileDescriptor::FileDescriptor(int descriptor, std::string path)
    : path_(std::move(path)), descriptor_(descriptor) {
    if (descriptor_ < 0)
        fail(path_);
}

FileDescriptor::~FileDescriptor() {
    ::close(descriptor_);
}

void FileDescriptor::write_all(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            fail(path_);
        if (written > 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

void FileDescriptor::sync() {
    if (::fsync(descriptor_) != 0)
        fail(path_);
}

FileLock::FileLock(const std::string& path) : file_(path, O_RDWR | O_CREAT) {
    constexpr auto patience = std::chrono::seconds(10); // who holds it may be stopped
    constexpr auto pause = std::chrono::milliseconds(5);
    const auto end = std::chrono::steady_clock::now() + patience;
    while (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR && errno != EWOULDBLOCK)
            fail(path);
        if (std::chrono::steady_clock::now() > end)
            throw vantaro_io::exception_io(path + " is held by another program that does not let go of it");
        std::this_thread::sleep_for(pause);
    }
}

std::string follow_links(const std::string& path) {
    constexpr int most_links = 40; // as many as the system follows
    fs::path current = path;
    std::error_code error;
    for (int n = 0; fs::is_symlink(fs::symlink_status(current, error)); ++n) {
        if (n == most_links)
            fail(path, ELOOP);
        const fs::path target = fs::read_symlink(current, error);
        if (error)
            fail(path, error.value());
        current = current.parent_path() / target;
    }
    return current.string();
}

void make_folder(const std::string& path) {
    if (::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST)
        return;
    if (errno != ENOENT || folder_of(path) == path)
        fail(path);
    make_folder(folder_of(path));
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        fail(path);
}

void sync_folder(const std::string& folder) {
    const FileDescriptor file(folder, O_RDONLY | O_DIRECTORY);
    // Some file systems cannot, and say so this way.
    if (::fsync(file.get()) != 0 && errno != EINVAL)
        fail(folder);
}

std::optional<std::string> read_file(const std::string& path) {
    // Without waiting for the other end, should it be a pipe.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0 && errno == ENOENT)
        return std::nullopt;
    const FileDescriptor file(descriptor, path);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        fail(path);
    if (!S_ISREG(status.st_mode))
        fail(path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    std::string bytes;
    std::array<char, 65536> buffer{};
    while (const ssize_t size = ::read(file.get(), buffer.data(), buffer.size())) {
        if (size > 0)
            bytes.append(buffer.data(), static_cast<std::size_t>(size));
        else if (errno != EINTR)
            fail(path);
    }
    return bytes;
}

void replace_file(const std::string& path, std::string_view bytes) {
    std::string name = path + ".new-XXXXXX";
    FileDescriptor file(::mkostemp(name.data(), O_CLOEXEC), path);
    Provisional temporary(name);
    file.write_all(bytes);
    struct stat old {};
    if (::stat(path.c_str(), &old) == 0 && ::fchmod(file.get(), old.st_mode & 07777) != 0)
        fail(path);
    file.sync();
    if (::rename(name.c_str(), path.c_str()) != 0)
        fail(path);
    temporary.keep();
    sync_folder(folder_of(path));
}

std::string reserve_name(const std::string& path, std::string_view kind) {
    const std::string base = path + "." + std::string(kind) + "-" + local_time_stamp();
    for (int n = 1;; ++n) {
        std::string name = n == 1 ? base : base + "-" + std::to_string(n);
        const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (descriptor < 0 && errno == EEXIST)
            continue;
        const FileDescriptor file(descriptor, name);
        return name;
    }
}

std::string set_copy_aside(const std::string& path, std::string_view kind, std::string_view bytes) {
    Provisional copy(reserve_name(path, kind));
    FileDescriptor file(copy.path(), O_WRONLY);
    file.write_all(bytes);
    file.sync();
    sync_folder(folder_of(path));
    return copy.keep();
}

std::string set_file_aside(const std::string& path, std::string_view kind) {
    // Renaming replaces the reserved file and therefore no other.
    Provisional reserved(reserve_name(path, kind));
    if (::rename(path.c_str(), reserved.path().c_str()) != 0)
        fail(path);
    std::string name = reserved.keep();
    sync_folder(folder_of(path));
    return name;
}

} // namespace vantaro::core
