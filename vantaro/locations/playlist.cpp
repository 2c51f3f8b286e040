#include "vantaro/locations/playlist.h"

#include "vantaro/common/utf8.h"
#include "vantaro/locations/location_text.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <array>

namespace vantaro::core {

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::size_t none = std::string_view::npos;

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    return first == none ? std::string_view() : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Names may end in blanks, so that nothing is cut off.
std::string_view m3u_entry(std::string_view line) {
    return line.starts_with('#') || trimmed(line).empty() ? std::string_view() : line;
}

std::string_view pls_entry(std::string_view line) {
    constexpr std::string_view key = "file";
    line = trimmed(line);
    const std::size_t equals = line.find('=');
    if (equals == none || !starts_with_ignoring_case(line, key))
        return {};
    const std::string_view number = trimmed(line.substr(key.size(), equals - key.size()));
    return number.find_first_not_of("0123456789") == none ? trimmed(line.substr(equals + 1))
                                                          : std::string_view();
}

std::string_view cue_entry(std::string_view line) {
    constexpr std::string_view command = "file";
    line = trimmed(line);
    if (!starts_with_ignoring_case(line, command) || line.find_first_of(blanks) != command.size())
        return {};
    line = trimmed(line.substr(command.size()));
    if (line.starts_with('"'))
        // Quotes within the name are not escaped: the last one ends it.
        return line.rfind('"') > 0 ? line.substr(1, line.rfind('"') - 1) : line.substr(1);
    return trimmed(line.substr(0, line.find_last_of(blanks)));
}

constexpr std::array formats{
    PlaylistFormat{".m3u", m3u_entry, false, false},
    PlaylistFormat{".m3u8", m3u_entry, true, false},
    PlaylistFormat{".pls", pls_entry, false, false},
    PlaylistFormat{".cue", cue_entry, false, true},
};

std::string from_windows_1252(std::string_view text) {
    std::string result;
    icu::UnicodeString(text.data(), static_cast<std::int32_t>(text.size()), "windows-1252")
        .toUTF8String(result);
    return result;
}

} // namespace

std::vector<std::string> playlist_extensions() {
    std::vector<std::string> texts;
    texts.reserve(formats.size());
    for (const PlaylistFormat& format : formats)
        texts.emplace_back(format.extension.substr(1));
    return texts;
}

const PlaylistFormat* playlist_format(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    if (dot == none)
        return nullptr;
    const std::string_view extension = path.substr(dot);
    const auto matches = [&](const PlaylistFormat& format) {
        return extension.size() == format.extension.size()
               && starts_with_ignoring_case(extension, format.extension);
    };
    const auto found = std::ranges::find_if(formats, matches);
    return found == formats.end() ? nullptr : &*found;
}

void visit_entries(const PlaylistFormat& format, std::string_view text,
                   const std::function<bool(std::string_view entry)>& visit) {
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (text.starts_with(byte_order_mark))
        text.remove_prefix(byte_order_mark.size());
    std::string_view previous;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        const std::string_view entry = format.entry_of(line);
        if (entry.empty() || (format.joins_repetitions && entry == previous))
            continue;
        if (!visit(entry))
            return;
        previous = entry;
    }
}

std::vector<std::string> paths_of_entry(const PlaylistFormat& format, std::string_view entry,
                                        std::string_view folder) {
    if (is_url(entry))
        return {full_path(path_of_url(entry), folder)};
    std::vector<std::string> texts{std::string(entry)};
    // What is longer is no path, and conversion counts in 32 bits.
    constexpr std::size_t longest_converted = 65536;
    if (!format.is_always_utf8 && entry.size() <= longest_converted && !is_utf8(entry))
        texts.push_back(from_windows_1252(entry));

    std::vector<std::string> paths;
    for (std::string& text : texts) {
        paths.push_back(full_path(text, folder));
        if (text.find('\\') != none) {
            std::ranges::replace(text, '\\', '/');
            paths.push_back(full_path(text, folder));
        }
    }
    return paths;
}

} // namespace vantaro::core
