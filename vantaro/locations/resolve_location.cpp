#include "vantaro/locations/resolve_location.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"
#include "vantaro/locations/location_text.h"
#include "vantaro/locations/natural_order.h"
#include "vantaro/locations/playlist.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <set>
#include <system_error>
#include <utility>

namespace vantaro::core {

namespace fs = std::filesystem;

namespace {

struct ::stat status_of(const std::string& path) {
    struct ::stat status {};
    if (::stat(path.c_str(), &status) != 0)
        throw_system_error(errno);
    return status;
}

std::string read_text(const std::string& path, const struct ::stat& status, const LocationLimits& limits) {
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > limits.playlist_size)
        throw vantaro_io::exception_io_data("The playlist is too large");
    // Without waiting for the other end, should it have become a pipe.
    const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        throw_system_error(errno);
    std::string text(size, '\0');
    std::size_t done = 0;
    ssize_t count = 1;
    while (count > 0 && done < size) {
        count = ::read(file, text.data() + done, size - done);
        done += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    const int error = errno;
    ::close(file);
    if (count < 0)
        throw_system_error(error);
    text.resize(done);
    if (text.find('\0') != std::string::npos)
        throw vantaro_io::exception_io_data("The playlist is not a text");
    return text;
}

/// Whether the name ends in what is meant as an extension: "01. Intro" does not.
bool has_extension(const std::string& path) {
    const std::string extension = fs::path(path).extension().native();
    return extension.size() > 1 && extension.find(' ') == std::string::npos;
}

std::string_view name_of(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

/// Paths of one folder: names decide.
void sort_by_name(std::vector<std::string>& paths) {
    sort_naturally(paths, name_of);
}

class Resolver {
public:
    Resolver(const std::function<bool(std::string_view path)>& is_audio_file,
             const std::function<bool()>& is_aborting, const LocationLimits& limits)
        : is_audio_file_(is_audio_file), is_aborting_(is_aborting), limits_(limits) {}

    void add_named(const std::string& path);
    ResolvedLocation take_result();

private:
    void add_folder(const std::string& root, const struct ::stat& root_status);
    void list_folder(const std::string& folder, std::vector<std::string>& pending);
    void add_playlist(const std::string& path, const struct ::stat& status, const PlaylistFormat& format);
    void add_entry(std::string_view entry, const PlaylistFormat& format, std::string_view folder);
    void add_problem(std::string_view path, std::string_view reason);
    bool is_first_visit(const struct ::stat& status) {
        return visited_.emplace(status.st_dev, status.st_ino).second;
    }
    void check_abort() const {
        if (is_aborting_())
            throw vantaro_io::exception_aborted();
    }

    const std::function<bool(std::string_view path)>& is_audio_file_;
    const std::function<bool()>& is_aborting_;
    const LocationLimits& limits_;
    ResolvedLocation result_;
    std::size_t unlisted_problems_ = 0;
    std::set<std::pair<dev_t, ino_t>> visited_; // folders and playlists
    std::vector<std::string_view> playlists_;   // being read, the innermost last
    std::size_t entries_ = 0;
};

void Resolver::add_named(const std::string& path) {
    check_abort();
    const struct ::stat status = status_of(path);
    if (S_ISDIR(status.st_mode)) {
        add_folder(path, status);
        return;
    }
    if (!S_ISREG(status.st_mode))
        throw vantaro_io::exception_io_no_handler_for_path("Neither a file nor a folder");
    if (::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0)
        throw_system_error(errno);
    if (const PlaylistFormat* format = playlist_format(path))
        add_playlist(path, status, *format);
    else if (is_audio_file_(path) || !has_extension(path))
        result_.paths.push_back(path);
    else
        result_.passed_over.push_back(path);
}

void Resolver::add_folder(const std::string& root, const struct ::stat& root_status) {
    if (!is_first_visit(root_status))
        return;
    std::vector<std::string> pending; // the next one last
    list_folder(root, pending);
    while (!pending.empty()) {
        const std::string folder = std::move(pending.back());
        pending.pop_back();
        try {
            if (is_first_visit(status_of(folder)))
                list_folder(folder, pending);
        } catch (const vantaro_io::exception_io& error) {
            add_problem(folder, error.what());
        }
    }
}

void Resolver::list_folder(const std::string& folder, std::vector<std::string>& pending) {
    check_abort();
    std::vector<std::string> files;
    std::vector<std::string> folders;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        check_abort();
        const std::string& path = entry->path().native();
        // What the folder says of the type is enough, except for links.
        std::error_code entry_error;
        const bool is_folder = entry->is_directory(entry_error);
        if (entry_error)
            add_problem(path, entry_error == std::errc::no_such_file_or_directory ? "The link leads nowhere"
                                                                                  : entry_error.message());
        else if (is_folder)
            folders.push_back(path);
        else if (entry->is_regular_file(entry_error) && playlist_format(path) == nullptr
                 && is_audio_file_(path))
            files.push_back(path);
    }
    sort_by_name(files);
    sort_by_name(folders);
    std::ranges::move(files, std::back_inserter(result_.paths));
    std::move(folders.rbegin(), folders.rend(), std::back_inserter(pending));
    // Last, so that what could be read of a folder is kept.
    if (error)
        throw_system_error(error.value());
}

void Resolver::add_playlist(const std::string& path, const struct ::stat& status,
                            const PlaylistFormat& format) {
    if (playlists_.size() > limits_.playlist_depth)
        throw vantaro_io::exception_io("Too many playlists within playlists");
    if (!is_first_visit(status))
        throw vantaro_io::exception_io("The playlist was read before");
    const std::string text = read_text(path, status, limits_);
    const std::string folder = fs::path(path).parent_path().string();
    playlists_.push_back(path);
    visit_entries(format, text, [&](std::string_view entry) {
        check_abort();
        if (entries_ == limits_.playlist_entries) {
            add_problem(path, "Too many entries, the rest is left out");
            return false;
        }
        ++entries_;
        add_entry(entry, format, folder);
        return true;
    });
    playlists_.pop_back();
}

void Resolver::add_entry(std::string_view entry, const PlaylistFormat& format, std::string_view folder) {
    std::string path(entry);
    try {
        const std::vector<std::string> paths = paths_of_entry(format, entry, folder);
        path = paths.front();
        const auto exists = [](const std::string& candidate) {
            std::error_code error;
            return fs::exists(candidate, error);
        };
        if (const auto found = std::ranges::find_if(paths, exists); found != paths.end())
            path = *found;
        add_named(path);
    } catch (const vantaro_io::exception_io& error) {
        add_problem(path, error.what());
    }
}

void Resolver::add_problem(std::string_view path, std::string_view reason) {
    if (result_.problems.size() >= limits_.problems) {
        ++unlisted_problems_;
        return;
    }
    std::string line = shown(path).append(": ").append(reason);
    if (!playlists_.empty() && playlists_.back() != path)
        line.append(" (named by ").append(shown(playlists_.back())).append(")");
    result_.problems.push_back(std::move(line));
}

ResolvedLocation Resolver::take_result() {
    if (unlisted_problems_ > 0)
        result_.problems.push_back("Further problems: " + std::to_string(unlisted_problems_));
    return std::move(result_);
}

} // namespace

ResolvedLocation resolve_location(std::string_view location,
                                  const std::function<bool(std::string_view path)>& is_audio_file,
                                  const std::function<bool()>& is_aborting, const LocationLimits& limits) {
    const std::string path = is_url(location) ? path_of_url(location) : std::string(location);
    if (path.empty() || path.find('\0') != std::string::npos)
        throw vantaro_io::exception_io_no_handler_for_path();
    std::error_code error;
    const fs::path current = path.starts_with('/') ? fs::path("/") : fs::current_path(error);
    if (error)
        throw_system_error(error.value());
    Resolver resolver(is_audio_file, is_aborting, limits);
    resolver.add_named(full_path(path, current.native()));
    return resolver.take_result();
}

std::string passed_over_line(const std::vector<std::string>& paths) {
    const std::string first = shown(paths.front());
    const std::size_t others = paths.size() - 1;
    if (others == 0)
        return first + ": passed over, since it is no music file";
    return first + " and " + std::to_string(others) + (others == 1 ? " other file" : " other files")
           + ": passed over, since they are no music files";
}

} // namespace vantaro::core
