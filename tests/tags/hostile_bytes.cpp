// hostile_bytes ROUNDS FILE...: damages copies of audio files in memory in many ways and reads and edits
// them. Fails on any exception that is no vantaro_io::exception_io, and on an edit that succeeds but cannot
// be read back.
#include "host/api/exceptions.h"
#include "vantaro/tags/tag_file.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

namespace {

using namespace vantaro;
using Values = std::vector<std::string>;

/// As many values as the format can have.
Values artists_of(const std::string& path) {
    return path.ends_with(".caf") ? Values{"One"} : Values{"One", "Two"};
}

// Returns whether the file was editable.
bool edit(const std::string& path, const std::string& bytes) {
    std::string edited;
    const core::MemorySource file(path, bytes);
    const std::vector<core::FieldChange> changes{
        {"ARTIST", artists_of(path)}, {"COMMENT", {}}, {"TOTALTRACKS", {"9"}}};
    TrackInfoRecord info;
    try {
        core::read_tags(file, info);
    } catch (const vantaro_io::exception_io&) {
    }
    try {
        edited = core::edited_bytes(core::write_tags(file, changes).edit, bytes);
    } catch (const vantaro_io::exception_io&) {
        return false;
    }
    core::read_tags(core::MemorySource(path, edited), info);
    const std::size_t artist = info.find_field("ARTIST");
    if (artist == no_field || info.value_count(artist) != artists_of(path).size())
        throw std::runtime_error("the edit cannot be read back");
    return true;
}

class Damage {
public:
    explicit Damage(std::string bytes) : bytes_(std::move(bytes)) {}

    // Tags stand at the ends of a file, so that is where most damage goes.
    std::string flipped() {
        std::string bytes = bytes_;
        for (std::size_t count = 1 + random(4); count > 0; --count)
            bytes[place()] = static_cast<char>(random(256));
        return bytes;
    }
    std::string with_extreme_size() {
        std::string bytes = bytes_;
        const std::size_t start = place();
        const char value = random(2) == 0 ? '\x7F' : '\xFF';
        for (std::size_t i = start; i < start + 4 && i < bytes.size(); ++i)
            bytes[i] = value;
        return bytes;
    }
    std::string truncated() { return bytes_.substr(0, place()); }
    std::string without_beginning() { return bytes_.substr(place()); }
    std::string with_gap() {
        std::string bytes = bytes_;
        return bytes.erase(place(), 1 + random(40));
    }

private:
    std::size_t random(std::size_t limit) { return engine_() % limit; }
    std::size_t place() {
        const std::size_t area = std::min<std::size_t>(bytes_.size(), 1500);
        const std::size_t near = random(area);
        switch (random(8)) {
        case 0:
            return random(bytes_.size());
        case 1:
        case 2:
            return bytes_.size() - 1 - near;
        default:
            return near;
        }
    }

    std::string bytes_;
    std::mt19937 engine_{20240501};
};

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 0;
    if (rounds <= 0) {
        std::cerr << "usage: hostile_bytes ROUNDS FILE...\n";
        return 1;
    }
    for (int i = 2; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        Damage damage(bytes);
        int editable = 0;
        const auto check = [&](const char* kind, int round, const std::string& damaged) {
            try {
                editable += edit(argv[i], damaged) ? 1 : 0;
            } catch (const std::exception& error) {
                std::cerr << argv[i] << ", " << kind << " " << round << ": " << error.what() << '\n';
                std::exit(1);
            }
        };
        if (bytes.empty() || !edit(argv[i], bytes)) {
            std::cerr << argv[i] << " is no audio file\n";
            return 1;
        }
        for (int round = 0; round < rounds; ++round) {
            check("flipped", round, damage.flipped());
            check("extreme size", round, damage.with_extreme_size());
            check("truncated", round, damage.truncated());
            check("without beginning", round, damage.without_beginning());
            check("with gap", round, damage.with_gap());
        }
        std::cout << argv[i] << ": " << editable << " of " << 5 * rounds << " were editable\n";
    }
    return 0;
}
