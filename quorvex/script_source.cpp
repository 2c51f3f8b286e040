#include "quorvex/script_source.h"

#include "host/filesystem_access.h"
#include "quorvex/script_json.h"
#include "script/script_library.h"
#include "script/script_stream.h"

#include <array>
#include <filesystem>
#include <optional>
#include <system_error>

namespace quorvex::command {

using namespace vantaro;

namespace {

/// Scripts hold pasted lines, but no music.
constexpr std::size_t largest_text = std::size_t{64} * 1024 * 1024;

constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";

/// The text of a file in the text form; nothing for one in the byte form.
std::optional<std::string> read_text_form(const std::string& path, AbortFlag& abort) {
    const Ref<File> file = filesystem::g_open(path.c_str(), OpenMode::read, abort);
    std::string text;
    std::array<char, 65536> chunk;
    while (const std::size_t count = file->reader().read(chunk.data(), chunk.size(), abort)) {
        text.append(chunk.data(), count);
        if (text.starts_with(utf8_mark))
            text.erase(0, utf8_mark.size());
        const std::size_t first = text.find_first_not_of(" \t\r\n");
        if (first != std::string::npos && text[first] != '{')
            return std::nullopt;
        if (text.size() > largest_text)
            throw vantaro_io::exception_io_data();
    }
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

} // namespace

StoredScript read_script(const std::string& path) {
    try {
        NeverAbort abort;
        if (const std::optional<std::string> text = read_text_form(path, abort))
            return script_from_json(*text);
        return read_script_file(path.c_str(), abort);
    } catch (const vantaro_io::exception_io& error) {
        throw vantaro_io::exception_io("Error loading quorvex script " + path + " (" + error.what() + ").");
    }
}

StoredScript load_named_script(const std::string& script) {
    std::error_code error;
    if (std::filesystem::exists(script, error))
        return read_script(script);
    if (const std::optional<std::size_t> index = script_library().find_script(script))
        return script_library().scripts()[*index];
    throw vantaro_io::exception_io_not_found(
        script + ": there is neither a script file nor a saved script of this name.");
}

} // namespace quorvex::command
