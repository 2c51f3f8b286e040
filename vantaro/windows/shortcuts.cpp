#include "vantaro/windows/shortcuts.h"

#include "host/api/exceptions.h"
#include "vantaro/storage/files.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace vantaro::core {

namespace {

using Json = nlohmann::ordered_json;

/// What a file says, and what there was to complain of.
struct Content {
    std::map<Guid, QKeySequence> shortcuts;
    std::vector<std::string> problems;
};

std::optional<QKeySequence> parse_keys(const Json& value) {
    if (!value.is_string())
        return std::nullopt;
    const auto text = QString::fromStdString(value.get<std::string>());
    const QKeySequence keys = QKeySequence::fromString(text, QKeySequence::PortableText);
    for (int i = 0; i < keys.count(); ++i)
        if (keys[static_cast<uint>(i)].key() == Qt::Key_unknown)
            return std::nullopt;
    return keys.isEmpty() ? std::nullopt : std::optional(keys);
}

Content parse(std::string_view text) {
    const Json json = Json::parse(text, nullptr, false);
    if (!json.is_object())
        return {{}, {"it is no JSON object; no command has keys"}};
    Content content;
    for (const auto& [name, value] : json.items()) {
        const std::optional<Guid> command = parse_guid(name);
        const std::optional<QKeySequence> keys = parse_keys(value);
        if (command && keys)
            content.shortcuts.emplace(*command, *keys);
        else
            content.problems.push_back(
                '"' + name + "\" is left out: " + (command ? "its value names no keys" : "it is no GUID"));
    }
    return content;
}

} // namespace

bool are_in_conflict(const QKeySequence& one, const QKeySequence& other) {
    return one.matches(other) != QKeySequence::NoMatch || other.matches(one) != QKeySequence::NoMatch;
}

void ShortcutTable::load(const std::string& config_dir, const Report& report) {
    path_ = config_dir + "/shortcuts.json";
    shortcuts_.clear();
    try {
        const std::optional<std::string> text = read_file(path_);
        if (!text)
            return;
        Content content = parse(*text);
        for (const std::string& problem : content.problems)
            report(path_ + ": " + problem + '.');
        shortcuts_ = std::move(content.shortcuts);
    } catch (const vantaro_io::exception_io& error) {
        report(std::string(error.what()) + "; no command has keys.");
    }
}

void ShortcutTable::save() const {
    // A link stays one: the file that it leads to is replaced.
    const std::string file = follow_links(path_);
    make_folder(std::filesystem::path(file).parent_path().string());
    const FileLock lock(file + ".lock");
    const std::optional<std::string> old_text = read_file(file);
    if (old_text && !parse(*old_text).problems.empty())
        set_copy_aside(file, "broken", *old_text);
    Json json = Json::object();
    for (const auto& [command, keys] : shortcuts_)
        json[to_text(command)] = keys.toString(QKeySequence::PortableText).toStdString();
    replace_file(file, json.dump(4) + '\n');
}

QKeySequence ShortcutTable::shortcut(const Guid& command) const {
    const auto found = shortcuts_.find(command);
    return found == shortcuts_.end() ? QKeySequence() : found->second;
}

void ShortcutTable::set(const Guid& command, const QKeySequence& keys) {
    if (keys.isEmpty())
        shortcuts_.erase(command);
    else
        shortcuts_[command] = keys;
}

} // namespace vantaro::core
