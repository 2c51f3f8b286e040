// The stored form of actions and scripts: what outlives a window or a process.
//
//     StoredScript stored{"Tidy up", {{set_value_kind, "GENRE\nJazz"}}};
#pragma once

#include "host/api/guid.h"

#include <string>
#include <vector>

namespace quorvex {

struct StoredAction {
    vantaro::Guid kind;
    /// The parameter text: UTF-8 without NUL bytes.
    std::string parameters;

    friend bool operator==(const StoredAction&, const StoredAction&) = default;
};

struct StoredScript {
    /// May be empty: scripts in files have no name.
    std::string name;
    std::vector<StoredAction> actions;

    friend bool operator==(const StoredScript&, const StoredScript&) = default;
};

} // namespace quorvex
