#include "actions/cue_file.h"

#include "host/api/system.h"
#include "host/filesystem_access.h"
#include "host/shared/text.h"

#include <algorithm>
#include <array>

namespace quorvex {

using namespace vantaro;

namespace {

std::string read_whole(const std::string& path, AbortFlag& abort) {
    const Ref<File> file = filesystem::g_open_stored(path.c_str(), abort);
    std::uint64_t size = 0;
    if (file->get_size(size, abort) && size > largest_cue_file)
        throw vantaro_io::exception_io_data();
    std::string bytes;
    std::array<char, 65536> chunk;
    while (const std::size_t count = file->reader().read(chunk.data(), chunk.size(), abort)) {
        bytes.append(chunk.data(), count);
        if (bytes.size() > largest_cue_file)
            throw vantaro_io::exception_io_data();
    }
    return bytes;
}

} // namespace

std::string cue_path_of(std::string_view track_path) {
    const std::size_t separator = track_path.find_last_of("\\/|:");
    const std::size_t name = separator == std::string_view::npos ? 0 : separator + 1;
    const std::size_t dot = track_path.rfind('.');
    const bool has_extension = dot != std::string_view::npos && dot >= name;
    return std::string(track_path.substr(0, has_extension ? dot : track_path.size())) + ".cue";
}

std::string read_cue_text(const std::string& path, AbortFlag& abort) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    std::string bytes = read_whole(path, abort);
    if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) {
        bytes = to_utf8(bytes, "UTF-16");
        bytes.resize(std::min(bytes.find('\0'), bytes.size()));
        return bytes;
    }
    const bool marked = bytes.starts_with(mark);
    if (marked)
        bytes.erase(0, mark.size());
    bytes.resize(std::min(bytes.find('\0'), bytes.size()));
    if (is_utf8(bytes))
        return bytes;
    if (marked)
        return to_utf8(bytes, "UTF-8"); // damaged: what is wrong becomes replacement characters
    const std::string code_page =
        text_of([](TextSink& out) { required_service<LegacyCodePage>()->get_name(out); });
    return to_utf8(bytes, code_page.c_str());
}

} // namespace quorvex
