#include "actions/embed_cuesheet.h"

#include "actions/cue_file.h"
#include "host/filesystem_access.h"

namespace quorvex {

using namespace vantaro;

namespace {

bool may_read_beside(const char* path) {
    const Ref<FileSystem> file_system = filesystem::g_find(path);
    return file_system && !file_system->is_remote(path);
}

/// Where file names have case, "Album.CUE" is one of those that people mean by "Album.cue".
std::string read_cue(const std::string& path) {
    NeverAbort abort;
    try {
        return read_cue_text(path, abort);
    } catch (const vantaro_io::exception_io_not_found&) {
        const std::optional<std::string> other = filesystem::g_find_ignoring_case(path.c_str());
        if (!other)
            throw;
        return read_cue_text(*other, abort);
    }
}

std::string read_cue_beside(const char* path) {
    try {
        return read_cue(cue_path_of(path));
    } catch (const vantaro_io::exception_io_not_found&) {
        return read_cue(std::string(path) + ".cue");
    }
}

} // namespace

void EmbedCuesheet::apply(TrackHandle* track, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const char* path = track->path();
    const auto print = [&](const char* text) {
        print_to_console(text + filesystem::g_get_display_path(path));
    };
    if (info.find_technical("cue_embedded") == no_field)
        return print("Embedded cuesheets not supported for this file format: ");
    if (track->subsong() != 0)
        return print("Cuesheet embedding not available for subsongs: ");
    if (!may_read_beside(path))
        return print("Cuesheet embedding not available for this filesystem: ");
    std::string text;
    try {
        text = read_cue_beside(path);
    } catch (const std::exception& error) {
        print_to_console("Could not load external cuesheet for \"" + filesystem::g_get_display_path(path)
                         + "\", reason: " + error.what());
        return;
    }
    info.set_field("cuesheet", text.c_str());
}

} // namespace quorvex
