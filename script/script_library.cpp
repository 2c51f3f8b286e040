#include "script/script_library.h"

#include "host/access.h"
#include "host/api/configuration_storage.h"
#include "host/shared/text.h"
#include "script/action_registry.h"
#include "script/script_stream.h"

#include <algorithm>
#include <functional>

namespace quorvex {

using namespace vantaro;

namespace {

class Change final : public HeapService<MainThreadCall> {
public:
    explicit Change(const std::function<void()>& change) : change_(change) {}
    void run() override { change_(); }

private:
    const std::function<void()>& change_;
};

/// Changes the library as it is stored now, and has it stored.
void change_stored(const std::function<void()>& change) {
    if (!host() || service_count(ConfigurationStorage::class_guid) == 0)
        return change();
    create_service<ConfigurationStorage>(0)->change(make_service<Change>(change).get());
}

} // namespace

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

bool ScriptLibrary::store_script(std::string_view wanted_name, std::vector<StoredAction> actions) {
    const std::string name(wanted_name);
    const std::optional<std::size_t> seen_index = find_script(name);
    const std::optional<StoredScript> seen = seen_index ? std::optional(scripts_[*seen_index]) : std::nullopt;
    change_stored([&] {
        std::optional<std::size_t> index = find_script(name);
        const bool is_anew = index && (!seen || scripts_[*index].actions != seen->actions);
        if (is_anew && scripts_[*index].actions != actions && name != last_used_script) {
            keep_aside(*index);
            index.reset();
        }
        StoredScript& entry = index ? scripts_[*index] : scripts_.emplace_back();
        entry = {name, std::move(actions)};
    });
    return !seen;
}

/// Gives the script another name.
void ScriptLibrary::keep_aside(std::size_t index) {
    std::string free_name;
    for (int number = 2; free_name.empty() || find_script(free_name); ++number)
        free_name = scripts_[index].name + " (" + std::to_string(number) + ")";
    scripts_[index].name = std::move(free_name);
}

void ScriptLibrary::delete_script(std::size_t index) {
    const StoredScript seen = scripts_[index];
    change_stored([&] {
        auto found = scripts_.begin() + static_cast<std::ptrdiff_t>(std::min(index, scripts_.size()));
        if (found == scripts_.end() || *found != seen)
            found = std::ranges::find(scripts_, seen);
        if (found != scripts_.end())
            scripts_.erase(found);
    });
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
