#include "quorvex/script_json.h"

#include "actions/parameter_text.h"
#include "actions/setting_table.h"
#include "host/api/completion.h"
#include "host/api/exceptions.h"
#include "host/shared/text.h"
#include "quorvex/output.h"
#include "script/action_registry.h"

#include <algorithm>

namespace quorvex::command {

using namespace vantaro;

namespace {

constexpr std::string_view more_mark = "...";

[[noreturn]] void reject(const std::string& where, const std::string& why) {
    throw vantaro_io::exception_io_data(where + ": " + why);
}

std::string_view without_mark(std::string_view name) {
    return name.ends_with(more_mark) ? name.substr(0, name.size() - more_mark.size()) : name;
}

bool same_name(std::string_view a, std::string_view b) {
    a = without_mark(a);
    b = without_mark(b);
    return stricmp_utf8_ex(a.data(), a.size(), b.data(), b.size()) == 0;
}

Guid kind_of(const Json& action, const std::vector<ActionMenuEntry>& menu, const std::string& where) {
    const auto found = action.find("kind");
    if (found == action.end() || !found->is_string())
        reject(where, "\"kind\" is missing, or is no text");
    const std::string& name = found->get_ref<const std::string&>();
    if (const auto id = parse_guid(name))
        return *id;
    const auto entry =
        std::ranges::find_if(menu, [&](const auto& kind) { return same_name(kind.name, name); });
    if (entry == menu.end())
        reject(where, "there is no kind of action \"" + name + "\"");
    return entry->type->get_guid();
}

std::string setting_text(const Setting& setting, const Json& value, const std::string& where) {
    const std::string quoted = '"' + std::string(setting.name) + '"';
    if (setting.form == SettingForm::case_flag) {
        if (!value.is_boolean())
            reject(where, quoted + " is neither true nor false");
        return value.get<bool>() ? "c" : "n";
    }
    if (!value.is_string())
        reject(where, quoted + " is no text");
    std::string text = value.get<std::string>();
    if (text.find('\0') != std::string::npos)
        reject(where, quoted + " holds a NUL character");
    if (setting.form == SettingForm::line && text.find('\n') != std::string::npos)
        reject(where, quoted + " holds a line break, which has no place there");
    return text;
}

std::string parameters_of(const Json& action, const Guid& kind, const std::string& where) {
    constexpr Setting raw{"parameters", SettingForm::rest};
    const auto settings = settings_of(kind);
    const bool is_raw = action.contains(raw.name);
    std::vector<std::string> texts;
    if (settings && !is_raw)
        for (const Setting& setting : *settings)
            texts.emplace_back(setting.form == SettingForm::case_flag ? "n" : "");
    for (const auto& [name, value] : action.items()) {
        if (name == "kind" || (is_raw && name == raw.name))
            continue;
        std::size_t index = 0;
        while (index < texts.size() && (*settings)[index].name != name)
            ++index;
        if (index == texts.size())
            reject(where, "this kind has no setting \"" + name + '"');
        texts[index] = setting_text((*settings)[index], value, where);
    }
    if (is_raw)
        return setting_text(raw, action.at(raw.name), where);
    return settings ? join_settings(texts) : std::string();
}

StoredAction action_from(const Json& action, const std::vector<ActionMenuEntry>& menu,
                         const std::string& where) {
    if (!action.is_object())
        reject(where, "it is no object");
    StoredAction stored;
    stored.kind = kind_of(action, menu, where);
    stored.parameters = parameters_of(action, stored.kind, where);
    // A kind that nobody here knows is left for the run to report; a known one says now what it cannot read.
    if (find_action_type(stored.kind) && !instantiate(stored, *make_service<IgnoreCompletion>()))
        reject(where, "the kind does not accept these settings");
    return stored;
}

void add_settings(Json& action, std::span<const Setting> settings, const std::vector<std::string>& texts) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const Setting& setting = settings[i];
        if (setting.form == SettingForm::case_flag)
            action[std::string(setting.name)] = texts[i] == "c";
        else
            action[std::string(setting.name)] = texts[i];
    }
}

Json action_to(const StoredAction& stored, const std::vector<ActionMenuEntry>& menu) {
    const auto entry =
        std::ranges::find_if(menu, [&](const auto& kind) { return kind.type->get_guid() == stored.kind; });
    Json action{
        {"kind", entry == menu.end() ? to_text(stored.kind) : std::string(without_mark(entry->name))}};
    try {
        if (const auto settings = settings_of(stored.kind)) {
            add_settings(action, *settings, split_settings(*settings, stored.parameters));
            return action;
        }
    } catch (const vantaro_io::exception_io_data&) {
        // Malformed, and kept as it is.
    }
    action["parameters"] = stored.parameters;
    return action;
}

} // namespace

StoredScript script_from_json(std::string_view text) {
    Json root;
    try {
        root = Json::parse(text);
    } catch (const Json::parse_error& error) {
        // The library's own text: "[json.exception.parse_error.101] parse error at line 1, column 5: ...".
        const std::string_view what = error.what();
        constexpr std::string_view start = "parse error at ";
        const std::size_t at = what.find(start);
        throw vantaro_io::exception_io_data(
            std::string(at == std::string_view::npos ? what : what.substr(at + start.size())));
    }
    if (!root.is_object() || !root.contains("actions") || !root["actions"].is_array())
        reject("script", "it is no object with a list of \"actions\"");
    StoredScript script;
    for (const auto& [name, value] : root.items()) {
        if (name == "name" && value.is_string())
            script.name = value.get<std::string>();
        else if (name != "actions")
            reject("script", "\"" + name + "\" has no place here");
    }
    if (script.name.find('\0') != std::string::npos)
        reject("script", "\"name\" holds a NUL character");
    const std::vector<ActionMenuEntry> menu = action_menu();
    std::size_t number = 0;
    for (const Json& action : root["actions"])
        script.actions.push_back(action_from(action, menu, "action " + std::to_string(++number)));
    return script;
}

std::string script_to_json(const StoredScript& script, NotUtf8 not_utf8) {
    const std::vector<ActionMenuEntry> menu = action_menu();
    Json root = Json::object();
    if (!script.name.empty())
        root["name"] = script.name;
    root["actions"] = Json::array();
    for (const StoredAction& action : script.actions)
        root["actions"].push_back(action_to(action, menu));
    try {
        return root.dump(4, ' ', false,
                         not_utf8 == NotUtf8::replace ? Json::error_handler_t::replace
                                                      : Json::error_handler_t::strict);
    } catch (const Json::type_error&) {
        throw vantaro_io::exception_io_data(
            "the script holds a text that is not UTF-8, which only *.qvx files can hold");
    }
}

} // namespace quorvex::command
