// ScriptLibrary: the named scripts that are kept in the configuration.
//
//     if (auto index = script_library().find_script("Tidy up"))
//         run(script_library().scripts()[*index]);
//
// Other processes have the same library. Where the host can (host/api/configuration_storage.h), storing and
// deleting change it as it is stored at that moment, and the change is stored when they return; what others
// have stored since the caller looked is then there as well, so that an index is good until the next call or
// event. Nothing that others have stored goes away unseen:
//   - a script that they have stored under the same name meanwhile is kept as "Name (2)";
//   - a script that they have stored anew meanwhile is not deleted.
// The script last run is nobody's work, and the later one is kept.
//
// Main thread only.
#pragma once

#include "component/configuration.h"
#include "script/action.h"
#include "script/stored_script.h"

#include <optional>
#include <string_view>
#include <vector>

namespace quorvex {

class ScriptLibrary final : public ConfigurationVariable {
public:
    explicit ScriptLibrary(const vantaro::Guid& id) : ConfigurationVariable(id) {}

    /// In the order in which they were created.
    const std::vector<StoredScript>& scripts() const { return scripts_; }
    /// Index of the first script of that name, whatever the case of its letters.
    std::optional<std::size_t> find_script(std::string_view name) const;
    /// Stores the actions under the name, which is then spelled as here: in the entry that has the name, or
    /// in a new one at the end. Returns whether it is a new one.
    bool store_script(std::string_view name, const Script& script);
    /// The same with actions that are stored already.
    bool store_script(std::string_view name, std::vector<StoredAction> actions);
    /// Requires: index < scripts().size().
    void delete_script(std::size_t index);

    void write(vantaro::StreamWriter& writer, vantaro::AbortFlag& abort) const override;
    /// After a failure the library holds the scripts read before it.
    void read(vantaro::StreamReader& reader, std::uint32_t size, vantaro::AbortFlag& abort) override;

private:
    void keep_aside(std::size_t index);

    std::vector<StoredScript> scripts_;
};

/// The entry that holds the script last run in the editor.
inline constexpr std::string_view last_used_script = "[last used]";

/// Appends the live actions to `target`. Returns whether every stored action could be made live; the others
/// are left out.
bool load_script(const StoredScript& stored, Script& target, vantaro::CompletionNotify& notify);

/// The component's library.
ScriptLibrary& script_library();

} // namespace quorvex
