// The settings of the built-in kinds, for people who write scripts by hand.
//
//     for (const Setting& setting : settings_of(SetValue::kind)->rows) ...     // "field", "value"
//     if (const auto fault = fault_of(action)) ...      // "field": Please enter a valid field name.
//
// settings_of: any thread; the others: main thread.
#pragma once

#include "host/api/guid.h"
#include "script/stored_script.h"
#include "ui/settings_dialog.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quorvex {

struct KindSettings {
    /// In the order of the parameter text; empty for a kind without settings.
    std::span<const Setting> rows;
    /// nullptr for a kind without settings.
    const SettingsDialog* dialog = nullptr;
};

/// Nothing for a kind that is not built in.
std::optional<KindSettings> settings_of(const vantaro::Guid& kind);

/// What must hold for a setting of the kind. Requires: setting < kind.rows.size().
const InputCheck& check_of(const KindSettings& kind, std::size_t setting);

struct NamedFault {
    std::string_view setting;
    /// What the kind's dialog says of it.
    std::string message;
    /// What the setting may be; empty where the message says it.
    std::string_view allowed;
};

/// The first setting with which something is wrong, as first_fault has it. Nothing for a kind that is not
/// built in, nor for a parameter text that the kind does not accept at all.
std::optional<NamedFault> fault_of(const StoredAction& action);

} // namespace quorvex
