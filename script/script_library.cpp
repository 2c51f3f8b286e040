#include "script/script_library.h"

#include "host/shared/text.h"
#include "script/script_stream.h"

#include <algorithm>

namespace quorvex {

std::optional<std::size_t> ScriptLibrary::find_script(std::string_view name) const {
    const auto found = std::ranges::find_if(scripts_, [&](const StoredScript& script) {
        return stricmp_utf8_ex(script.name.data(), script.name.size(), name.data(), name.size()) == 0;
    });
    if (found == scripts_.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - scripts_.begin());
}

void ScriptLibrary::write(vantaro::StreamWriter& writer, vantaro::AbortFlag& abort) const {
    write_script_list(writer, scripts_, abort);
}

void ScriptLibrary::read(vantaro::StreamReader& reader, std::uint32_t, vantaro::AbortFlag& abort) {
    read_script_list(reader, scripts_, abort);
}

ScriptLibrary& script_library() {
    return static_cast<ScriptLibrary&>(configuration_variable(setting::script_library));
}

} // namespace quorvex
