// What reading tags costs beside TagLib: the same files, on the same threads, in one process, by turns.
//
//     find FOLDER -name '*.mp3' | read_bench [ROUNDS [THREADS]]
//
// A line for each reading, the ways in turn:
//
//     read_tags   seconds         fields, technical fields, replay gain: all that read_tags() gives
//     properties  seconds         TagLib::FileRef, which reads tags and audio, and its fields as one map
//     FileRef     seconds         TagLib::FileRef alone, nothing taken out of it
//
// Every way reads all files once before anything is measured, so that all find them in memory.

#include "bench/threads.h"
#include "vantaro/tags/tag_file.h"

#include <fileref.h>
#include <tpropertymap.h>

#include <array>
#include <cstdio>

namespace {

using Read = void(const std::string&);

void read_with_us(const std::string& path) {
    vantaro::TrackInfoRecord info;
    vantaro::core::read_tags(path, info);
    if (info.fields().empty())
        throw std::runtime_error("no fields");
}

void open_with_taglib(const std::string& path) {
    if (TagLib::FileRef(path.c_str()).isNull())
        throw std::runtime_error("TagLib cannot read it");
}

void read_with_taglib(const std::string& path) {
    const TagLib::FileRef file(path.c_str());
    if (file.isNull() || file.file()->properties().isEmpty())
        throw std::runtime_error("TagLib finds no fields");
}

struct Way {
    const char* name;
    Read* read;
};

constexpr std::array ways{Way{"read_tags", read_with_us}, Way{"properties", read_with_taglib},
                          Way{"FileRef", open_with_taglib}};

void measure(unsigned rounds, unsigned threads) {
    const std::vector<std::string> paths = paths_of_input();
    for (const Way& way : ways)
        on_threads(paths, threads, way.read);
    for (unsigned round = 0; round < rounds; ++round)
        for (const Way& way : ways)
            std::printf("%-11s %.6f\n", way.name, on_threads(paths, threads, way.read));
}

} // namespace

int main(int argc, char** argv) {
    try {
        measure(number_argument(argc, argv, 1, 5),
                number_argument(argc, argv, 2, std::max(1U, std::thread::hardware_concurrency())));
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "read_bench: " << error.what() << '\n';
        return 1;
    }
}
