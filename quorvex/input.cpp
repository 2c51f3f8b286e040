#include "quorvex/input.h"

#include "host/filesystem_access.h"
#include "vantaro/common/system_error.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace quorvex::command {

using namespace vantaro;

namespace {

constexpr std::size_t largest_list = std::size_t{1024} * 1024 * 1024;

/// The stream by its number: not every system has a name for it.
class StandardInput final : public StreamReader {
public:
    std::size_t read(void* buffer, std::size_t count, AbortFlag& abort) override {
        while (true) {
            std::array<pollfd, 2> waiting{{{STDIN_FILENO, POLLIN, 0}, {abort.wait_handle(), POLLIN, 0}}};
            if (::poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR)
                core::throw_system_error(errno);
            abort.check();
            if (waiting[0].revents == 0)
                continue;
            const ssize_t got = ::read(STDIN_FILENO, buffer, count);
            if (got >= 0)
                return static_cast<std::size_t>(got);
            if (errno != EINTR && errno != EAGAIN)
                core::throw_system_error(errno);
        }
    }
};

/// An interrupt as the flag that operations take.
class Interrupted final : public AbortFlag {
public:
    explicit Interrupted(const AbortFlag& interrupt) : interrupt_(interrupt) {}
    bool is_aborting() const noexcept override { return interrupt_.is_aborting(); }
    int wait_handle() const noexcept override { return interrupt_.wait_handle(); }

private:
    const AbortFlag& interrupt_;
};

std::string read_all(StreamReader& reader, std::size_t most, AbortFlag& abort) {
    std::string bytes;
    std::array<char, 65536> chunk;
    while (const std::size_t count = reader.read(chunk.data(), chunk.size(), abort)) {
        bytes.append(chunk.data(), count);
        if (bytes.size() > most)
            throw vantaro_io::exception_io_data("It is too large");
    }
    return bytes;
}

} // namespace

std::string read_input(Session& session, const std::string& path, std::size_t most) {
    Interrupted abort(session.host.interrupt());
    if (path == standard_input) {
        StandardInput input;
        return read_all(input, most, abort);
    }
    const Ref<File> file = filesystem::g_open(path.c_str(), OpenMode::read, abort);
    return read_all(file->reader(), most, abort);
}

std::vector<std::string> named_paths(Session& session, const PathOptions& options) {
    std::vector<std::string> paths = options.paths;
    if (!options.files_from)
        return paths;
    std::string list;
    try {
        list = read_input(session, *options.files_from, largest_list);
        if (!options.null_separated && list.find('\0') != std::string::npos)
            throw vantaro_io::exception_io_data("It holds NUL characters; --null takes them for the ends of "
                                                "paths");
    } catch (const vantaro_io::exception_io& error) {
        throw vantaro_io::exception_io(
            "The list of paths cannot be read from "
            + (*options.files_from == standard_input ? std::string("standard input") : *options.files_from)
            + " (" + error.what() + ").");
    }
    const char end = options.null_separated ? '\0' : '\n';
    std::string_view rest = list;
    while (!rest.empty()) {
        const std::string_view path = rest.substr(0, rest.find(end));
        if (!path.empty())
            paths.emplace_back(path);
        rest.remove_prefix(std::min(path.size() + 1, rest.size()));
    }
    return paths;
}

} // namespace quorvex::command
