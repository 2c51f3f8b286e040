#include "ui/history.h"

#include "host/shared/text.h"

#include <algorithm>

namespace quorvex {

std::vector<std::string> DropDownHistory::entries() const {
    std::vector<std::string> entries;
    std::string_view rest = text_setting(variable_).get();
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        if (end > 0)
            entries.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return entries;
}

bool DropDownHistory::add(std::string_view text) const {
    if (text.empty())
        return false;
    std::string entry;
    uReplaceCharAdd(entry, text, '\n', '|');
    std::vector<std::string> all = entries();
    const auto found = std::ranges::find(all, entry);
    const bool was_there = found != all.end();
    if (was_there)
        all.erase(found);
    else if (all.size() > capacity_)
        all.resize(capacity_);
    all.insert(all.begin(), std::move(entry));
    store(all);
    return was_there;
}

bool DropDownHistory::remove(std::string_view text) const {
    std::vector<std::string> all = entries();
    const auto found = std::ranges::find(all, text);
    if (found == all.end())
        return false;
    all.erase(found);
    store(all);
    return true;
}

void DropDownHistory::wipe() const {
    store({});
}

void DropDownHistory::store(const std::vector<std::string>& entries) const {
    std::string text;
    for (const std::string& entry : entries)
        text += entry + '\n';
    text_setting(variable_).set(text);
}

} // namespace quorvex
