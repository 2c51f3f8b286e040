#include "quorvex/script_source.h"

#include "host/api/memory_stream.h"
#include "host/filesystem_access.h"
#include "quorvex/input.h"
#include "quorvex/script_json.h"
#include "script/script_library.h"
#include "script/script_stream.h"

#include <filesystem>
#include <optional>
#include <system_error>

namespace quorvex::command {

using namespace vantaro;

namespace {

/// Scripts hold pasted lines, but no music.
constexpr std::size_t largest_script = std::size_t{256} * 1024 * 1024;
/// As many faults are told one by one.
constexpr std::size_t most_told = 10;

constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";

/// The text form among the bytes; empty for the other form.
std::string_view text_form(std::string_view bytes) {
    if (bytes.starts_with(utf8_mark))
        bytes.remove_prefix(utf8_mark.size());
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && bytes[first] == '{' ? bytes : std::string_view();
}

void tell_faults(Session& session, const std::string& name, const StoredScript& script) {
    const std::vector<std::string> faults = script_faults(script);
    for (std::size_t i = 0; i < faults.size() && i < most_told; ++i)
        session.terminal.line("Warning: " + name + ": " + faults[i]);
    if (faults.size() > most_told)
        session.terminal.line("Warning: " + name + ": and so in " + std::to_string(faults.size() - most_told)
                              + " more actions");
}

} // namespace

StoredScript read_script(Session& session, const std::string& path) {
    const std::string name = path == standard_input ? "of standard input" : path;
    try {
        const std::string bytes = read_input(session, path, largest_script);
        if (const std::string_view text = text_form(bytes); !text.empty())
            return script_from_json(text);
        NeverAbort abort;
        MemoryReader reader(bytes);
        StoredScript script = read_script_file(reader, abort);
        tell_faults(session, name, script);
        return script;
    } catch (const vantaro_io::exception_io& error) {
        throw vantaro_io::exception_io("Error loading quorvex script " + name + " (" + error.what() + ").");
    }
}

StoredScript load_named_script(Session& session, const std::string& script) {
    std::error_code error;
    if (script == standard_input || std::filesystem::exists(script, error))
        return read_script(session, script);
    if (const std::optional<std::size_t> index = script_library().find_script(script)) {
        StoredScript saved = script_library().scripts()[*index];
        tell_faults(session, script, saved);
        return saved;
    }
    throw vantaro_io::exception_io_not_found(
        script + ": there is neither a script file nor a saved script of this name.");
}

bool has_lasting_name(const std::string& script) {
    return script != standard_input && !script.starts_with("/dev/") && !script.starts_with("/proc/");
}

} // namespace quorvex::command
