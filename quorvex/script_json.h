// The text form of scripts, for writing them by hand and keeping them under version control:
//
//     {
//         "name": "Tidy up",
//         "actions": [
//             {"kind": "Set value", "field": "GENRE", "value": "Jazz"},
//             {"kind": "Remove values", "field": "COMMENT", "values": "a;b", "case-sensitive": true},
//             {"kind": "{C3BDD536-670A-4AFE-9C7C-BD72BAE9AA89}", "parameters": "COMMENT"}
//         ]
//     }
//
// A kind is given by its menu name (in any case, with or without "...") or its GUID; "settings" stand beside
// it by name (actions/setting_table.h), or as the parameter text under "parameters". All settings are named,
// but letter case does not count unless "case-sensitive" is true. What the settings dialogs check is checked
// here, too. docs/script-text.md shows every kind.
//
// Main thread.
#pragma once

#include "script/stored_script.h"
#include "ui/setting.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace quorvex::command {

/// Reads the text form.
/// Throws: vantaro_io::exception_io_data with what is wrong and where ("line 3, column 7: ...", "action 2
/// (Set value): ...").
StoredScript script_from_json(std::string_view text);

/// What script_from_json would refuse in the settings of a script that does not come from text, a line for
/// each action: "action 2 (Set value): "field": Please enter a valid field name. ...".
std::vector<std::string> script_faults(const StoredScript& script);

/// Whether a script must name the setting.
bool must_be_named(const Setting& setting);
/// The name of a kind as scripts give it.
std::string_view without_mark(std::string_view menu_name);

/// What becomes of texts that are not UTF-8: they are shown with replacement characters, or refused.
enum class NotUtf8 { replace, refuse };

/// The text form of a script, indented. Kinds are named as the menu names them, unknown ones by GUID.
/// Throws: vantaro_io::exception_io_data when a text that is not UTF-8 is to be refused.
std::string script_to_json(const StoredScript& script, NotUtf8 not_utf8);

} // namespace quorvex::command
