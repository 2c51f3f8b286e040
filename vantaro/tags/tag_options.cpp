#include "vantaro/tags/tag_options.h"

#include "vantaro/common/utf8.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vantaro::core {

namespace {

constexpr std::array<std::pair<std::string_view, Id3v2Policy>, 4> names{{
    {"as-needed", Id3v2Policy::as_needed},
    {"keep", Id3v2Policy::keep},
    {"2.3", Id3v2Policy::v23},
    {"2.4", Id3v2Policy::v24},
}};

} // namespace

std::optional<Id3v2Policy> id3v2_policy(std::string_view name) {
    const auto found = std::ranges::find(names, name, &std::pair<std::string_view, Id3v2Policy>::first);
    return found == names.end() ? std::nullopt : std::optional(found->second);
}

std::string_view name_of(Id3v2Policy policy) {
    return std::ranges::find(names, policy, &std::pair<std::string_view, Id3v2Policy>::second)->first;
}

bool can_separate(std::string_view text) {
    return !text.empty() && is_utf8(text) && text.find('\0') == text.npos;
}

} // namespace vantaro::core
