// The least that any program pays for a list of files: opening each, reading its first 4 KiB, writing the
// same bytes back in place, closing it. The files stay as they are, but for the time of change.
//
//     find FOLDER -name '*.mp3' | floor_bench read|write [THREADS]
//
// "read" leaves the writing out. Prints the seconds without the time to read the list.

#include "bench/threads.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

class Descriptor {
public:
    Descriptor(const std::string& path, int flags)
        : number_(check(::open(path.c_str(), flags | O_CLOEXEC))) {}
    ~Descriptor() { ::close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    operator int() const { return number_; }

    template <class Number>
    static Number check(Number result) {
        if (result < 0)
            throw std::runtime_error(std::strerror(errno));
        return result;
    }

private:
    const int number_;
};

using Block = std::array<char, 4096>;

void only_read(const std::string& path) {
    Block block;
    const Descriptor file(path, O_RDONLY);
    Descriptor::check(::pread(file, block.data(), block.size(), 0));
}

void read_and_write(const std::string& path) {
    Block block;
    const Descriptor file(path, O_RDWR);
    const auto size = Descriptor::check(::pread(file, block.data(), block.size(), 0));
    Descriptor::check(::pwrite(file, block.data(), static_cast<std::size_t>(size), 0));
}

} // namespace

int main(int argc, char** argv) {
    try {
        const std::string_view what = argc > 1 ? argv[1] : "";
        if (what != "read" && what != "write")
            throw std::runtime_error("the first argument is \"read\" or \"write\"");
        const unsigned threads =
            number_argument(argc, argv, 2, std::max(1U, std::thread::hardware_concurrency()));
        std::printf("%.6f\n",
                    on_threads(paths_of_input(), threads, what == "write" ? read_and_write : only_read));
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "floor_bench: " << error.what() << '\n';
        return 1;
    }
}
