#include "quorvex/script_json.h"

#include "actions/parameter_text.h"
#include "actions/setting_table.h"
#include "host/api/completion.h"
#include "host/api/exceptions.h"
#include "host/shared/text.h"
#include "quorvex/nearest_word.h"
#include "quorvex/output.h"
#include "script/action_registry.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <span>

namespace quorvex::command {

using namespace vantaro;

namespace {

constexpr std::string_view more_mark = "...";
/// The parameter text of any kind, for those that are not built in.
constexpr Setting raw{"parameters", SettingForm::rest};

[[noreturn]] void reject(const std::string& where, const std::string& why) {
    throw vantaro_io::exception_io_data(where + ": " + why);
}

bool same_name(std::string_view a, std::string_view b) {
    a = without_mark(a);
    b = without_mark(b);
    return stricmp_utf8_ex(a.data(), a.size(), b.data(), b.size()) == 0;
}

auto find_kind(const std::vector<ActionMenuEntry>& menu, const Guid& kind) {
    return std::ranges::find_if(menu, [&](const auto& entry) { return entry.type->get_guid() == kind; });
}

std::string in_quotes(std::string_view text) {
    return '"' + std::string(text) + '"';
}

std::string shown_kind(const ActionMenuEntry& entry) {
    return std::string(without_mark(entry.name));
}

Guid kind_of(const Json& action, const std::vector<ActionMenuEntry>& menu, const std::string& where) {
    const auto found = action.find("kind");
    if (found == action.end() || !found->is_string())
        reject(where, "\"kind\" is missing, or is no text; it names a kind of action, as \"quorvex kinds\" "
                      "lists them");
    const std::string& name = found->get_ref<const std::string&>();
    if (const auto id = parse_guid(name))
        return *id;
    const auto entry =
        std::ranges::find_if(menu, [&](const auto& kind) { return same_name(kind.name, name); });
    if (entry == menu.end()) {
        std::vector<std::string> names;
        std::ranges::transform(menu, std::back_inserter(names), shown_kind);
        const std::string* nearest = nearest_word(name, names);
        reject(where, "there is no kind of action " + in_quotes(name)
                          + (nearest ? "; did you mean " + in_quotes(*nearest) + '?'
                                     : std::string("; \"quorvex kinds\" lists them")));
    }
    return entry->type->get_guid();
}

/// For what is wrong with an action: which one it is.
std::string place_of(std::size_t number, const Guid& kind, const std::vector<ActionMenuEntry>& menu) {
    const auto entry = find_kind(menu, kind);
    return "action " + std::to_string(number) + " ("
           + (entry == menu.end() ? to_text(kind) : shown_kind(*entry)) + ')';
}

std::string names_of(std::span<const Setting> settings) {
    std::string names;
    for (const Setting& setting : settings)
        names += (names.empty() ? "" : ", ") + in_quotes(setting.name);
    return names;
}

[[noreturn]] void reject_unknown(std::span<const Setting> settings, const std::string& name,
                                 const std::string& where) {
    reject(where, "this kind has no setting " + in_quotes(name)
                      + (settings.empty() ? "" : "; it has " + names_of(settings)));
}

std::string setting_text(const Setting& setting, const Json& value, const std::string& where) {
    const std::string shown = in_quotes(setting.name);
    if (setting.form == SettingForm::case_flag) {
        if (!value.is_boolean())
            reject(where, shown + " is neither true nor false");
        return value.get<bool>() ? "c" : "n";
    }
    if (!value.is_string())
        reject(where, shown + " is no text");
    std::string text = value.get<std::string>();
    if (text.find('\0') != std::string::npos)
        reject(where, shown + " holds a NUL character");
    if (setting.form == SettingForm::line && text.find('\n') != std::string::npos)
        reject(where, shown + " holds a line break, which has no place there");
    return text;
}

std::string fault_text(const NamedFault& fault) {
    std::string text = in_quotes(fault.setting) + ": " + fault.message;
    if (!fault.allowed.empty())
        text.append(" Allowed: ").append(fault.allowed) += '.';
    return text;
}

/// As settings by their names.
std::string parameters_of(const Json& action, std::span<const Setting> settings, const std::string& where) {
    std::vector<std::optional<std::string>> texts(settings.size());
    for (const auto& [name, value] : action.items()) {
        if (name == "kind")
            continue;
        const auto setting = std::ranges::find(settings, name, &Setting::name);
        if (setting == settings.end())
            reject_unknown(settings, name, where);
        texts[static_cast<std::size_t>(setting - settings.begin())] = setting_text(*setting, value, where);
    }
    std::vector<std::string> complete;
    for (std::size_t i = 0; i < settings.size(); ++i) {
        if (!texts[i] && must_be_named(settings[i]))
            reject(where, in_quotes(settings[i].name) + " is missing; this kind needs " + names_of(settings));
        complete.push_back(texts[i].value_or(std::string(settings[i].initial)));
    }
    return join_settings(complete);
}

/// As one text.
std::string raw_parameters_of(const Json& action, std::span<const Setting> settings,
                              const std::string& where) {
    for (const auto& [name, value] : action.items())
        if (name != "kind" && name != raw.name)
            reject(where,
                   in_quotes(name) + " has no place beside " + in_quotes(raw.name)
                       + (settings.empty() ? "" : "; without it, this kind has " + names_of(settings)));
    return action.contains(raw.name) ? setting_text(raw, action.at(raw.name), where) : std::string();
}

StoredAction action_from(const Json& action, const std::vector<ActionMenuEntry>& menu, std::size_t number) {
    std::string where = "action " + std::to_string(number);
    if (!action.is_object())
        reject(where, "it is no object");
    StoredAction stored;
    stored.kind = kind_of(action, menu, where);
    where = place_of(number, stored.kind, menu);
    const auto built_in = settings_of(stored.kind);
    stored.parameters =
        built_in && !action.contains(raw.name)
            ? parameters_of(action, built_in->rows, where)
            : raw_parameters_of(action, built_in ? built_in->rows : std::span<const Setting>(), where);
    // A kind that nobody here knows is left for the run to report; a known one says now what it cannot read.
    if (find_action_type(stored.kind) && !instantiate(stored, *make_service<IgnoreCompletion>()))
        reject(where, "the kind does not accept these settings");
    if (const auto fault = fault_of(stored))
        reject(where, fault_text(*fault));
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
    const auto entry = find_kind(menu, stored.kind);
    Json action{{"kind", entry == menu.end() ? to_text(stored.kind) : shown_kind(*entry)}};
    try {
        if (const auto settings = settings_of(stored.kind)) {
            add_settings(action, settings->rows, split_settings(settings->rows, stored.parameters));
            return action;
        }
    } catch (const vantaro_io::exception_io_data&) {
        // Malformed, and kept as it is.
    }
    action[std::string(raw.name)] = stored.parameters;
    return action;
}

} // namespace

std::string_view without_mark(std::string_view menu_name) {
    return menu_name.ends_with(more_mark) ? menu_name.substr(0, menu_name.size() - more_mark.size())
                                          : menu_name;
}

// Letter case may go unmentioned; everything else is what the action is to do, and leaving it out is a slip.
bool must_be_named(const Setting& setting) {
    return setting.form != SettingForm::case_flag;
}

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
            reject("script", in_quotes(name)
                                 + " has no place here; a script has \"actions\", and may have a "
                                   "text as \"name\"");
    }
    if (script.name.find('\0') != std::string::npos)
        reject("script", "\"name\" holds a NUL character");
    const std::vector<ActionMenuEntry> menu = action_menu();
    std::size_t number = 0;
    for (const Json& action : root["actions"])
        script.actions.push_back(action_from(action, menu, ++number));
    return script;
}

std::vector<std::string> script_faults(const StoredScript& script) {
    const std::vector<ActionMenuEntry> menu = action_menu();
    std::vector<std::string> faults;
    for (std::size_t i = 0; i < script.actions.size(); ++i)
        if (const auto fault = fault_of(script.actions[i]))
            faults.push_back(place_of(i + 1, script.actions[i].kind, menu) + ": " + fault_text(*fault));
    return faults;
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
