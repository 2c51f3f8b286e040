#include "vantaro/loading/library_file.h"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace vantaro::core {

std::string find_damage(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    // Opening a pipe would wait for its other end.
    if (std::error_code none; std::filesystem::is_fifo(path, none))
        return "it is a pipe";
    std::ifstream file(path, std::ios::binary);
    if (error || !file)
        return {}; // the loader says it better
    ElfW(Ehdr) header;
    if (!file.read(reinterpret_cast<char*>(&header), sizeof header))
        return "it is too short";
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_phentsize != sizeof(ElfW(Phdr)))
        return {};
    file.seekg(static_cast<std::streamoff>(header.e_phoff));
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment;
        if (!file.read(reinterpret_cast<char*>(&segment), sizeof segment))
            return "it is cut off";
        if (segment.p_offset > size || segment.p_filesz > size - segment.p_offset)
            return "it is cut off";
    }
    return {};
}

} // namespace vantaro::core
