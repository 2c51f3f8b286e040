// The settings of the built-in kinds, for people who write scripts by hand.
//
//     for (const Setting& setting : *settings_of(SetValue::kind)) ...     // "field", "value"
//
// Any thread.
#pragma once

#include "host/api/guid.h"
#include "ui/setting.h"

#include <optional>
#include <span>

namespace quorvex {

/// In the order of the parameter text; empty for a kind without settings, nothing for one that is not built
/// in.
std::optional<std::span<const Setting>> settings_of(const vantaro::Guid& kind);

} // namespace quorvex
