// The kinds of actions that the host knows, and the way from stored actions to live ones.
//
//     Script script;
//     bool complete = instantiate(stored, *notify, script);       // false: something was left out
//
// The kinds cannot change while the host runs. Main thread, but where an operation says otherwise.
#pragma once

#include "script/action.h"
#include "script/stored_script.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

struct ActionMenuEntry {
    std::string name;
    vantaro::Ref<ActionType> type;
};

/// The kinds as a menu lists them: by name, without regard to case; of kinds with equal names the one that
/// the host enumerates last.
std::vector<ActionMenuEntry> action_menu();

/// The kind of that GUID, or nothing. Any thread. Of kinds with equal GUIDs, the one enumerated last; off the
/// main thread, before there has been a look-up on it, the one enumerated first.
vantaro::Ref<ActionType> find_action_type(const vantaro::Guid& kind);

/// A live action; nothing when the kind is unknown or finds the parameter text malformed. Other exceptions of
/// the kind pass.
vantaro::Ref<Action> instantiate(const StoredAction& stored, vantaro::CompletionNotify& notify);
/// Appends the live actions to `script`. Returns whether every one could be made; those that could not are
/// left out.
bool instantiate(const StoredScript& stored, vantaro::CompletionNotify& notify, Script& script);

/// The stored form of live actions.
StoredScript store_actions(std::string_view name, const Script& script);

} // namespace quorvex
