#include "script/action_registry.h"

#include "host/access.h"
#include "host/shared/text.h"

#include <map>
#include <mutex>

namespace quorvex {

using namespace vantaro;

namespace {

struct NameOrder {
    bool operator()(const std::string& a, const std::string& b) const {
        return stricmp_utf8(a.c_str(), b.c_str()) < 0;
    }
};

/// Where the host enumerates each kind.
class KindTable {
public:
    /// The kind's enumeration index. Builds the table where that is allowed; where it is not and there is
    /// none yet, answers with the position of `kind` found by a scan.
    std::optional<std::size_t> find(const Guid& kind) {
        const std::lock_guard lock(mutex_);
        if (built_for_ != host()) {
            if (!may_run_on_this_thread())
                return scan(kind);
            build();
        }
        const auto found = indexes_.find(kind);
        return found == indexes_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    static std::optional<std::size_t> scan(const Guid& kind) {
        const std::size_t count = service_count(ActionType::class_guid);
        for (std::size_t index = 0; index < count; ++index)
            if (create_service<ActionType>(index)->get_guid() == kind)
                return index;
        return std::nullopt;
    }
    void build() {
        indexes_.clear();
        const std::size_t count = service_count(ActionType::class_guid);
        for (std::size_t index = 0; index < count; ++index)
            indexes_.insert_or_assign(create_service<ActionType>(index)->get_guid(), index);
        built_for_ = host();
    }

    std::mutex mutex_; // guards the two below
    std::map<Guid, std::size_t> indexes_;
    const HostApi* built_for_ = nullptr;
};

} // namespace

std::vector<ActionMenuEntry> action_menu() {
    std::map<std::string, ActionMenuEntry, NameOrder> by_name;
    const std::size_t count = service_count(ActionType::class_guid);
    for (std::size_t index = 0; index < count; ++index) {
        Ref<ActionType> type = create_service<ActionType>(index);
        std::string name = text_of([&](TextSink& out) { type->get_name(out); });
        by_name.insert_or_assign(name, ActionMenuEntry{name, std::move(type)});
    }
    std::vector<ActionMenuEntry> menu;
    menu.reserve(by_name.size());
    for (auto& [name, entry] : by_name)
        menu.push_back(std::move(entry));
    return menu;
}

Ref<ActionType> find_action_type(const Guid& kind) {
    static KindTable table;
    const std::optional<std::size_t> index = table.find(kind);
    return index ? create_service<ActionType>(*index) : Ref<ActionType>();
}

Ref<Action> instantiate(const StoredAction& stored, CompletionNotify& notify) {
    const Ref<ActionType> type = find_action_type(stored.kind);
    if (!type)
        return {};
    try {
        return Ref<Action>::adopt(type->create_from_text(&notify, stored.parameters.c_str()));
    } catch (const vantaro_io::exception_io_data&) {
        return {};
    }
}

bool instantiate(const StoredScript& stored, CompletionNotify& notify, Script& script) {
    bool complete = true;
    for (const StoredAction& action : stored.actions) {
        if (Ref<Action> live = instantiate(action, notify))
            script.push_back(std::move(live));
        else
            complete = false;
    }
    return complete;
}

StoredScript store_actions(std::string_view name, const Script& script) {
    StoredScript stored{std::string(name), {}};
    for (const Ref<Action>& action : script)
        stored.actions.push_back(
            {action->get_guid(), text_of([&](TextSink& out) { action->get_parameter_text(out); })});
    return stored;
}

} // namespace quorvex
