#include "script/script_library.h"

#include "host/shared/text.h"
#include "script/action_registry.h"
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

bool ScriptLibrary::store_script(std::string_view name, const Script& script) {
    return store_script(name, store_actions(name, script).actions);
}

bool ScriptLibrary::store_script(std::string_view name, std::vector<StoredAction> actions) {
    const std::optional<std::size_t> index = find_script(name);
    StoredScript& entry = index ? scripts_[*index] : scripts_.emplace_back();
    entry = {std::string(name), std::move(actions)};
    return !index;
}

void ScriptLibrary::delete_script(std::size_t index) {
    scripts_.erase(scripts_.begin() + static_cast<std::ptrdiff_t>(index));
}

void ScriptLibrary::write(vantaro::StreamWriter& writer, vantaro::AbortFlag& abort) const {
    write_script_list(writer, scripts_, abort);
}

void ScriptLibrary::read(vantaro::StreamReader& reader, std::uint32_t, vantaro::AbortFlag& abort) {
    read_script_list(reader, scripts_, abort);
}

bool load_script(const StoredScript& stored, Script& target, vantaro::CompletionNotify& notify) {
    return instantiate(stored, notify, target);
}

ScriptLibrary& script_library() {
    return static_cast<ScriptLibrary&>(configuration_variable(setting::script_library));
}

} // namespace quorvex
