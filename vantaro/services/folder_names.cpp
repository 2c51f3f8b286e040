#include "vantaro/services/folder_names.h"

#include "vantaro/common/utf8.h"

#include <unicode/unistr.h>

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

namespace vantaro::core {

namespace {

std::string folded(const std::string& name) {
    std::string result;
    if (is_utf8(name)) {
        icu::UnicodeString::fromUTF8(name).foldCase().toUTF8String(result);
        return result;
    }
    for (const char c : name)
        result += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return result;
}

bool is_same(const std::timespec& a, const std::timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

} // namespace

void FolderNames::list(const std::string& folder) {
    struct stat status {};
    // Names may come and go within one step of the system's clock.
    constexpr std::time_t settled_after = 2; // seconds
    const bool is_there = ::stat(folder.c_str(), &status) == 0;
    const bool is_settled = is_there && status.st_mtim.tv_sec + settled_after < std::time(nullptr);
    if (is_settled && folder == folder_ && is_same(status.st_mtim, changed_))
        return;
    folder_ = is_settled ? folder : std::string();
    changed_ = status.st_mtim;
    names_.clear();
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        names_.emplace(folded(name), name);
    }
}

std::optional<std::string> FolderNames::find_ignoring_case(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string above = path.substr(0, slash == std::string::npos ? 0 : slash + 1);
    const std::lock_guard lock(mutex_);
    list(above.empty() ? "." : above);
    const auto [first, last] = names_.equal_range(folded(path.substr(above.size())));
    std::optional<std::string> found;
    for (auto name = first; name != last; ++name) {
        std::error_code error;
        const std::string candidate = above + name->second;
        if ((!found || candidate < *found) && !std::filesystem::is_directory(candidate, error) && !error)
            found = candidate;
    }
    return found;
}

} // namespace vantaro::core
