// A library to start a program with (LD_PRELOAD): below one folder the system then behaves as some file
// systems do on which it is hard to try things.
//
//     LD_PRELOAD=libother_system.so OTHER_FOLDER=/tmp/music OTHER_RENAME=held quorvex run tidy.json
//     /tmp/music
//
// OTHER_FOLDER    the folder, an absolute path without links
// OTHER_RENAME    a rename onto a file unlinks that file and is refused, as on SMB mounts: "held" when the
// program holds
//                 the file open, "every" time
// OTHER_SPARED    ... but not the first so many times
// OTHER_LIMIT     ... and at most so many times
// OTHER_AGAIN     so many renames onto a name that is gone since are refused as well
// OTHER_TYPE      what statfs says the file system is, as a number
// OTHER_UNNAMED   "no": files without a name cannot be made, files cannot be shifted
// OTHER_TIMES     times of change in steps of so many nanoseconds
// OTHER_KILL      the program ends, as by SIGKILL, ahead of the call of that number (from 1) that changes
// something in
//                 the folder; half of a write reaches the file
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <set>
#include <string>

namespace {

template <class Call>
Call next(const char* name) {
    void* const found = ::dlsym(RTLD_NEXT, name);
    Call call = nullptr;
    std::memcpy(&call, &found, sizeof call);
    return call;
}

std::string setting(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

long number(const char* name, long otherwise) {
    const std::string text = setting(name);
    return text.empty() ? otherwise : std::strtol(text.c_str(), nullptr, 0);
}

const std::string& folder() {
    static const std::string path = setting("OTHER_FOLDER");
    return path;
}

bool is_in_folder(const std::string& path) {
    return !folder().empty() && (path == folder() || path.starts_with(folder() + '/'));
}

std::string path_of(int file) {
    std::array<char, PATH_MAX> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    const ssize_t size = ::readlink(link.c_str(), path.data(), path.size());
    return {path.data(), size < 0 ? 0 : static_cast<std::size_t>(size)};
}

bool is_in_folder(int file) {
    const int error = errno;
    const bool result = is_in_folder(path_of(file));
    errno = error;
    return result;
}

/// Whether the call that is about to change something is the one that is not made any more.
bool is_last_call() {
    static const long last = number("OTHER_KILL", 0);
    static std::atomic<long> calls = 0;
    return last != 0 && ++calls == last;
}

void end_here() {
    ::kill(::getpid(), SIGKILL);
    ::pause();
}

void change_in_folder(bool is_there) {
    if (is_there && is_last_call())
        end_here();
}

bool is_held(const std::string& path) {
    struct stat target {};
    if (::stat(path.c_str(), &target) != 0)
        return false;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        struct stat open_file {};
        if (::stat(entry.path().c_str(), &open_file) == 0 && open_file.st_dev == target.st_dev
            && open_file.st_ino == target.st_ino)
            return true;
    }
    return false;
}

/// What a rename does here before it comes to the system's.
class Renames {
public:
    bool is_refused(const std::string& to) {
        const std::lock_guard lock(mutex_);
        if (how_.empty() || !is_in_folder(to))
            return false;
        if (::access(to.c_str(), F_OK) != 0)
            return gone_.contains(to) && again_-- > 0;
        if (how_ == "held" && !is_held(to))
            return false;
        if (spared_-- > 0 || limit_-- <= 0)
            return false;
        ::unlink(to.c_str());
        gone_.insert(to);
        return true;
    }

private:
    std::mutex mutex_; // guards what is below
    const std::string how_ = setting("OTHER_RENAME");
    long spared_ = number("OTHER_SPARED", 0);
    long limit_ = number("OTHER_LIMIT", LONG_MAX);
    long again_ = number("OTHER_AGAIN", 0);
    std::set<std::string> gone_;
};

bool is_refused(const char* to) {
    static Renames renames;
    if (!renames.is_refused(to))
        return false;
    errno = EACCES;
    return true;
}

template <class Time>
void coarsen(Time& seconds, long& nanoseconds) {
    static const long step = number("OTHER_TIMES", 0);
    constexpr long second = 1'000'000'000;
    if (step <= 0)
        return;
    nanoseconds = step < second ? nanoseconds - nanoseconds % step : 0;
    if (step >= second)
        seconds -= seconds % (step / second);
}

int coarse(int result, struct stat* found, bool is_there) {
    if (result == 0 && is_there) {
        coarsen(found->st_mtim.tv_sec, found->st_mtim.tv_nsec);
        coarsen(found->st_ctim.tv_sec, found->st_ctim.tv_nsec);
    }
    return result;
}

int other_type(int result, struct statfs* found, bool is_there) {
    static const long type = number("OTHER_TYPE", 0);
    if (result == 0 && is_there && type != 0)
        found->f_type = type;
    return result;
}

bool has_unnamed() {
    static const bool has = setting("OTHER_UNNAMED") != "no";
    return has;
}

ssize_t write_at(int file, const void* bytes, std::size_t size, off_t offset) {
    static const auto call = next<decltype(&pwrite)>("pwrite");
    if (is_in_folder(file) && is_last_call()) {
        call(file, bytes, size / 2, offset);
        end_here();
    }
    return call(file, bytes, size, offset);
}

int open_at(int at, const char* path, int flags, mode_t mode) {
    static const auto call = next<decltype(&openat)>("openat");
    if ((flags & O_TMPFILE) == O_TMPFILE && !has_unnamed() && is_in_folder(path)) {
        errno = EOPNOTSUPP;
        return -1;
    }
    if ((flags & O_CREAT) != 0)
        change_in_folder(is_in_folder(path));
    return call(at, path, flags, mode);
}

mode_t mode_of(int flags, va_list arguments) {
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// The system's names, which its headers may have made names of macros or of other calls.
#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_of(flags, arguments);
    va_end(arguments);
    return open_at(AT_FDCWD, path, flags, mode);
}

EXPORTED int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_of(flags, arguments);
    va_end(arguments);
    return open_at(AT_FDCWD, path, flags, mode);
}

EXPORTED ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t offset) {
    return write_at(file, bytes, size, offset);
}

EXPORTED ssize_t pwrite64(int file, const void* bytes, std::size_t size, off64_t offset) {
    return write_at(file, bytes, size, offset);
}

EXPORTED int ftruncate(int file, off_t size) noexcept {
    static const auto call = next<int (*)(int, off_t)>("ftruncate");
    change_in_folder(is_in_folder(file));
    return call(file, size);
}

EXPORTED int ftruncate64(int file, off64_t size) noexcept {
    return ftruncate(file, size);
}

EXPORTED int fallocate(int file, int mode, off_t offset, off_t size) {
    static const auto call = next<decltype(&fallocate)>("fallocate");
    const bool is_there = is_in_folder(file);
    if (is_there && (mode & ~FALLOC_FL_KEEP_SIZE) != 0 && !has_unnamed()) {
        errno = EOPNOTSUPP;
        return -1;
    }
    change_in_folder(is_there);
    return call(file, mode, offset, size);
}

EXPORTED int fallocate64(int file, int mode, off64_t offset, off64_t size) {
    return fallocate(file, mode, offset, size);
}

EXPORTED int rename(const char* from, const char* to) noexcept {
    static const auto call = next<int (*)(const char*, const char*)>("rename");
    change_in_folder(is_in_folder(to));
    return is_refused(to) ? -1 : call(from, to);
}

EXPORTED int renameat(int at, const char* from, int to_at, const char* to) noexcept {
    static const auto call = next<int (*)(int, const char*, int, const char*)>("renameat");
    change_in_folder(is_in_folder(to));
    return is_refused(to) ? -1 : call(at, from, to_at, to);
}

EXPORTED int renameat2(int at, const char* from, int to_at, const char* to, unsigned flags) noexcept {
    static const auto call = next<int (*)(int, const char*, int, const char*, unsigned)>("renameat2");
    change_in_folder(is_in_folder(to));
    return flags == 0 && is_refused(to) ? -1 : call(at, from, to_at, to, flags);
}

EXPORTED int linkat(int at, const char* from, int to_at, const char* to, int flags) noexcept {
    static const auto call = next<int (*)(int, const char*, int, const char*, int)>("linkat");
    change_in_folder(is_in_folder(to));
    return call(at, from, to_at, to, flags);
}

EXPORTED int unlink(const char* path) noexcept {
    static const auto call = next<int (*)(const char*)>("unlink");
    change_in_folder(is_in_folder(path));
    return call(path);
}

EXPORTED int stat(const char* path, struct stat* found) noexcept {
    static const auto call = next<int (*)(const char*, struct stat*)>("stat");
    return coarse(call(path, found), found, is_in_folder(path));
}

EXPORTED int stat64(const char* path, struct stat64* found) noexcept {
    return stat(path, reinterpret_cast<struct stat*>(found));
}

EXPORTED int lstat(const char* path, struct stat* found) noexcept {
    static const auto call = next<int (*)(const char*, struct stat*)>("lstat");
    return coarse(call(path, found), found, is_in_folder(path));
}

EXPORTED int lstat64(const char* path, struct stat64* found) noexcept {
    return lstat(path, reinterpret_cast<struct stat*>(found));
}

EXPORTED int fstat(int file, struct stat* found) noexcept {
    static const auto call = next<int (*)(int, struct stat*)>("fstat");
    return coarse(call(file, found), found, is_in_folder(file));
}

EXPORTED int fstat64(int file, struct stat64* found) noexcept {
    return fstat(file, reinterpret_cast<struct stat*>(found));
}

EXPORTED int statfs(const char* path, struct statfs* found) noexcept {
    static const auto call = next<int (*)(const char*, struct statfs*)>("statfs");
    return other_type(call(path, found), found, is_in_folder(path));
}

EXPORTED int statfs64(const char* path, struct statfs64* found) noexcept {
    return statfs(path, reinterpret_cast<struct statfs*>(found));
}

EXPORTED int fstatfs(int file, struct statfs* found) noexcept {
    static const auto call = next<int (*)(int, struct statfs*)>("fstatfs");
    return other_type(call(file, found), found, is_in_folder(file));
}

EXPORTED int fstatfs64(int file, struct statfs64* found) noexcept {
    return fstatfs(file, reinterpret_cast<struct statfs*>(found));
}
