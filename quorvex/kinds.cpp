#include "quorvex/output.h"
#include "quorvex/script_json.h"
#include "quorvex/verbs.h"

#include "actions/setting_table.h"
#include "script/action_registry.h"
#include "vantaro/application/exit_status.h"

#include <algorithm>

namespace quorvex::command {

namespace {

constexpr const char* raw_name = "parameters";
constexpr const char* raw_meaning = "the kind's own parameter text";

struct SettingText {
    std::string_view name;
    /// For programs, and for people.
    const char* type;
    const char* shown_type;
    std::string_view allowed;
    bool is_required;
};

SettingText text_of_setting(const KindSettings& kind, std::size_t index) {
    const Setting& setting = kind.rows[index];
    const bool is_flag = setting.form == SettingForm::case_flag;
    const bool is_line = setting.form == SettingForm::line;
    return {setting.name,
            is_flag   ? "boolean"
            : is_line ? "line"
                      : "text",
            is_flag   ? "true or false"
            : is_line ? "one line"
                      : "text",
            is_flag ? "true, false" : check_of(kind, index).allowed, must_be_named(setting)};
}

std::vector<SettingText> settings_text(const vantaro::Guid& kind) {
    const auto built_in = settings_of(kind);
    if (!built_in)
        return {{raw_name, "text", "text", raw_meaning, false}};
    std::vector<SettingText> all;
    for (std::size_t i = 0; i < built_in->rows.size(); ++i)
        all.push_back(text_of_setting(*built_in, i));
    return all;
}

Json settings_array(const std::vector<SettingText>& settings) {
    Json all = Json::array();
    for (const SettingText& setting : settings) {
        Json object{{"name", setting.name},
                    {"type", setting.type},
                    {"required", setting.is_required},
                    {"allowed", setting.allowed}};
        if (!setting.is_required && setting.name == raw_name)
            object["default"] = "";
        else if (!setting.is_required)
            object["default"] = false;
        all.push_back(std::move(object));
    }
    return all;
}

void print_settings(const std::vector<SettingText>& settings) {
    for (const SettingText& setting : settings) {
        std::string line = "    " + std::string(setting.name);
        line.resize(std::max<std::size_t>(line.size(), 20), ' ');
        line.append(setting.shown_type);
        if (setting.is_required || setting.name == raw_name)
            line.append(": ").append(setting.allowed);
        else
            line.append("; false when left out");
        print_line(line);
    }
}

} // namespace

int kinds(bool json) {
    const std::vector<ActionMenuEntry> menu = action_menu();
    std::size_t width = 0;
    for (const ActionMenuEntry& entry : menu)
        width = std::max(width, entry.name.size());
    for (const ActionMenuEntry& entry : menu) {
        const vantaro::Guid id = entry.type->get_guid();
        const std::string kind = to_text(id);
        const std::vector<SettingText> settings = settings_text(id);
        if (json) {
            print_json({{"name", entry.name}, {"guid", kind}, {"settings", settings_array(settings)}});
        } else {
            std::string name = vantaro::core::printable(entry.name);
            name.resize(width + 2, ' ');
            print_line(name.append(kind));
            print_settings(settings);
        }
    }
    return vantaro::core::exit_status::done;
}

} // namespace quorvex::command
