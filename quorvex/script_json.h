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
// it by name (actions/setting_table.h), or as the parameter text under "parameters". Settings that are not
// named are empty, and letter case does not count unless "case-sensitive" is true. docs/script-text.md shows
// every kind.
//
// Main thread.
#pragma once

#include "script/stored_script.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace quorvex::command {

/// Reads the text form.
/// Throws: vantaro_io::exception_io_data with what is wrong and where ("line 3, column 7: ...", "action 2:
/// ...").
StoredScript script_from_json(std::string_view text);

/// What becomes of texts that are not UTF-8: they are shown with replacement characters, or refused.
enum class NotUtf8 { replace, refuse };

/// The text form of a script, indented. Kinds are named as the menu names them, unknown ones by GUID.
/// Throws: vantaro_io::exception_io_data when a text that is not UTF-8 is to be refused.
std::string script_to_json(const StoredScript& script, NotUtf8 not_utf8);

} // namespace quorvex::command
