#include "vantaro/application/preferences.h"

#include "host/api/exceptions.h"
#include "vantaro/storage/default_folders.h"
#include "vantaro/storage/files.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <optional>

namespace vantaro::core {

namespace {

using Json = nlohmann::json;

template <class T, class IsFitting>
void take(const Json& json, const char* name, T& target, const IsFitting& is_fitting) {
    const auto value = json.find(name);
    if (value == json.end())
        return;
    if (!is_fitting(*value))
        throw vantaro_io::exception_io_data(std::string("the value of \"") + name + "\" does not fit");
    target = value->get<T>();
}

std::string path_in(const std::string& config_dir) {
    return config_dir + "/preferences.json";
}

} // namespace

Preferences load_preferences(const std::string& config_dir,
                             const std::function<void(const std::string& line)>& report) {
    if (config_dir.empty())
        return {};
    const std::string path = path_in(config_dir);
    const auto defaults_with = [&](const std::string& line) {
        report(line + "; the defaults hold.");
        Preferences defaults;
        defaults.are_known = false;
        return defaults;
    };
    std::optional<std::string> text;
    try {
        text = read_file(path);
    } catch (const std::exception& error) {
        return defaults_with(error.what()); // names the file
    }
    if (!text)
        return {};
    try {
        const Json json = Json::parse(*text);
        if (!json.is_object())
            throw vantaro_io::exception_io_data("it is no JSON object");
        const auto is_count = [](const Json& value) { return value.is_number_unsigned(); };
        constexpr std::int64_t most_days = 36500;
        const auto is_days = [&](const Json& value) { return is_count(value) && value <= most_days; };
        Preferences result;
        take(json, "undo_days", result.undo.days, is_days);
        take(json, "undo_bytes", result.undo.bytes, is_count);
        take(json, "keep_times", result.keep_times, [](const Json& value) { return value.is_boolean(); });
        std::string policy(name_of(result.tags.id3v2));
        take(json, "id3v2", policy,
             [](const Json& value) { return value.is_string() && id3v2_policy(value.get<std::string>()); });
        result.tags.id3v2 = *id3v2_policy(policy);
        take(json, "id3v2_separator", result.tags.separator,
             [](const Json& value) { return value.is_string() && can_separate(value.get<std::string>()); });
        return result;
    } catch (const std::exception& error) {
        return defaults_with(path + ": " + error.what());
    }
}

void save_preferences(const std::string& config_dir, const Preferences& preferences) {
    if (config_dir.empty())
        throw vantaro_io::exception_io_not_found(no_home_folder);
    // A link stays one: the file that it leads to is replaced.
    const std::string file = follow_links(path_in(config_dir));
    make_folder(std::filesystem::path(file).parent_path().string());
    const FileLock lock(file + ".lock");
    const std::optional<std::string> old_text = read_file(file);
    auto json = nlohmann::ordered_json::object();
    if (old_text) {
        json = nlohmann::ordered_json::parse(*old_text, nullptr, false);
        if (!json.is_object()) {
            set_copy_aside(file, "broken", *old_text);
            json = nlohmann::ordered_json::object();
        }
    }
    json["undo_days"] = preferences.undo.days;
    json["undo_bytes"] = preferences.undo.bytes;
    json["keep_times"] = preferences.keep_times;
    json["id3v2"] = name_of(preferences.tags.id3v2);
    json["id3v2_separator"] = preferences.tags.separator;
    replace_file(file, json.dump(4) + '\n');
}

} // namespace vantaro::core
