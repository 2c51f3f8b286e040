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

/// What was read of a stream already, and the rest of it.
class Continued final : public StreamReader {
public:
    Continued(std::string_view begin, StreamReader& rest) : begin_(begin), rest_(rest) {}

    std::size_t read(void* buffer, std::size_t count, AbortFlag& abort) override {
        const std::size_t first = begin_.copy(static_cast<char*>(buffer), count);
        begin_.remove_prefix(first);
        return first == count ? count
                              : first + rest_.read(static_cast<char*>(buffer) + first, count - first, abort);
    }

private:
    std::string_view begin_;
    StreamReader& rest_;
};

/// Whether it is the text form that begins this way; nothing when there are only blanks so far.
std::optional<bool> is_text_form(std::string_view begin) {
    if (begin.starts_with(utf8_mark))
        begin.remove_prefix(utf8_mark.size());
    const std::size_t first = begin.find_first_not_of(" \t\r\n");
    return first == std::string_view::npos ? std::nullopt : std::optional(begin[first] == '{');
}

/// Opens the file once: it may be a pipe.
StoredScript read_either_form(const std::string& path) {
    NeverAbort abort; // the host has its own
    const Ref<File> file = filesystem::g_open(path.c_str(), OpenMode::read, abort);
    std::string text;
    std::array<char, 65536> chunk;
    while (const std::size_t count = file->reader().read(chunk.data(), chunk.size(), abort)) {
        text.append(chunk.data(), count);
        if (is_text_form(text) == false)
            break;
        if (text.size() > largest_text)
            throw vantaro_io::exception_io_data();
    }
    if (is_text_form(text) == true)
        return script_from_json(
            std::string_view(text).substr(text.starts_with(utf8_mark) ? utf8_mark.size() : 0));
    Continued whole(text, file->reader());
    return read_script_file(whole, abort);
}

} // namespace

StoredScript read_script(const std::string& path) {
    try {
        return read_either_form(path);
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
