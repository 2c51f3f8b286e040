#include "vantaro/storage/component_configuration.h"

#include "host/api/exceptions.h"
#include "vantaro/storage/default_folders.h"
#include "vantaro/storage/files.h"
#include "vantaro/storage/records.h"

#include <filesystem>
#include <set>
#include <stdexcept>
#include <utility>

namespace vantaro::core {

namespace {

constexpr std::string_view truncated = "a record is longer than the file";

std::string lock_of(const std::string& file) {
    return file + ".lock";
}

std::string broken_notice(const std::string& file, std::string_view reason, const std::string& kept_as) {
    return file + " could not be used (" + std::string(reason) + ") and is kept as " + kept_as;
}

} // namespace

/// What saving comes to, as the file is now.
struct ComponentConfiguration::Outcome {
    std::optional<std::string> old_bytes;
    bool is_broken = false;
    MergedRecords merged;

    bool changes_file() const { return is_broken || old_bytes.value_or("") != merged.bytes; }
};

ComponentConfiguration::ComponentConfiguration(const std::string& config_dir,
                                               std::string_view component_file_name)
    : path_(config_dir.empty()
                ? std::string()
                : std::filesystem::absolute(std::filesystem::path(config_dir) / component_file_name).string()
                      + ".cfg") {
    if (component_file_name.empty() || component_file_name.find('/') != std::string_view::npos
        || component_file_name.find('\0') != std::string_view::npos)
        throw std::invalid_argument("not the name of a component's file: "
                                    + std::string(component_file_name));
}

ComponentConfiguration::LoadResult ComponentConfiguration::load() {
    base_.reset();
    LoadResult result;
    if (path_.empty()) {
        base_.emplace();
        return result;
    }
    const std::string file = follow_links(path_);
    std::optional<std::string> bytes = read_file(file);
    if (bytes && !parse_records(*bytes)) {
        const FileLock lock(lock_of(file));
        // Another process may have been here first.
        bytes = read_file(file);
        if (bytes && !parse_records(*bytes)) {
            result.notices.push_back(broken_notice(file, truncated, set_file_aside(file, "broken")));
            bytes.reset();
        }
    }
    base_ = result.bytes = bytes.value_or("");
    return result;
}

void ComponentConfiguration::complete(std::string_view bytes) {
    const std::optional<Records> ours = parse_records(bytes);
    if (!base_ || !ours)
        return;
    const Records old_base = parse_records(*base_).value();
    std::set<Guid> stored;
    // The tail, which has no meaning, would come in between.
    std::string base;
    for (const Record& record : old_base.records) {
        stored.insert(record.key.first);
        base += record.bytes;
    }
    for (const Record& record : ours->records)
        if (!stored.contains(record.key.first))
            base += record.bytes;
    base_ = std::move(base);
}

std::string ComponentConfiguration::set_aside(std::string_view reason) {
    const std::string refused = std::exchange(base_, std::string()).value_or("");
    if (path_.empty())
        return "A component could not start without its settings (" + std::string(reason) + ")";
    const std::string file = follow_links(path_);
    const std::string not_used = " could not be used (" + std::string(reason) + ") and has been ";
    if (!read_file(file))
        return refused.empty()
                   ? "The component of " + file + ", which is not there, could not start without it ("
                         + std::string(reason) + ")"
                   : file + not_used + "removed since";
    const FileLock lock(lock_of(file));
    return read_file(file) == refused ? broken_notice(file, reason, set_file_aside(file, "broken"))
                                      : file + not_used + "replaced since";
}

ComponentConfiguration::Outcome ComponentConfiguration::merge_with_file(const std::string& file,
                                                                        std::string_view bytes) const {
    const std::optional<Records> ours = parse_records(bytes);
    if (!ours)
        throw vantaro_io::exception_io_data(path_
                                            + ": the component wrote a record that is longer than its bytes");
    Outcome outcome{.old_bytes = read_file(file), .merged = {}};
    std::optional<Records> theirs =
        parse_records(outcome.old_bytes ? *outcome.old_bytes : std::string_view());
    outcome.is_broken = !theirs;
    outcome.merged = merge_records(parse_records(*base_).value(), *ours, theirs.value_or(Records()));
    return outcome;
}

void ComponentConfiguration::take_changes(std::string_view bytes,
                                          const std::function<bool(std::string_view records)>& hand_over) {
    if (!base_ || path_.empty())
        return;
    const Outcome outcome = merge_with_file(follow_links(path_), bytes);
    if (outcome.is_broken || !outcome.old_bytes)
        return;
    if (outcome.merged.news.empty() || hand_over(outcome.merged.news))
        base_ = outcome.merged.base;
}

ComponentConfiguration::SaveResult ComponentConfiguration::save(std::string_view bytes) {
    if (!base_)
        throw vantaro_io::exception_io_denied(path_
                                              + ": it could not be read and is therefore left as it is");
    if (path_.empty()) {
        if (bytes == *base_)
            return {};
        throw vantaro_io::exception_io_not_found(std::string("Settings are not stored: ") + no_home_folder);
    }
    SaveResult result;
    const std::string file = follow_links(path_);
    // The usual case needs neither the lock nor a folder that may be written to.
    if (merge_with_file(file, bytes).changes_file()) {
        make_folder(std::filesystem::path(file).parent_path().string());
        const FileLock lock(lock_of(file));
        const Outcome outcome = merge_with_file(file, bytes);
        // As copies, so that the old file is in its place should writing fail.
        if (outcome.is_broken)
            result.notices.push_back(
                broken_notice(file, truncated, set_copy_aside(file, "broken", *outcome.old_bytes)));
        else if (outcome.merged.has_conflict)
            result.notices.push_back(file + " was changed by another process; its version is kept as "
                                     + set_copy_aside(file, "conflict", *outcome.old_bytes));
        else if (outcome.merged.has_surplus)
            result.notices.push_back(file + " held a setting twice; as it was, it is kept as "
                                     + set_copy_aside(file, "conflict", *outcome.old_bytes));
        if (outcome.changes_file()) {
            replace_file(file, outcome.merged.bytes);
            result.is_written = true;
        }
    }
    base_ = bytes;
    return result;
}

} // namespace vantaro::core
