#include "vantaro/program/toolkit_options.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vantaro::core {

namespace {

constexpr std::array valued{"display",         "geometry",      "icon",      "name",
                            "platform",        "platformtheme", "plugin",    "platformpluginpath",
                            "qwindowgeometry", "qwindowicon",   "title",     "qwindowtitle",
                            "session",         "style",         "stylesheet"};
constexpr std::array bare{"dograb", "nograb", "reverse"};

enum class Kind { none, with_value, by_itself };

Kind kind_of(std::string_view argument) {
    const auto is_one_of = [&](const auto& names) {
        const std::string_view name = argument.substr(argument.starts_with("--") ? 2 : 1);
        return std::ranges::any_of(names, [&](const char* other) { return name == other; });
    };
    if (is_one_of(valued))
        return Kind::with_value;
    const bool has_value = argument.starts_with("-style=") || argument.starts_with("-stylesheet=")
                           || argument.starts_with("--style=") || argument.starts_with("--stylesheet=");
    return has_value || is_one_of(bare) ? Kind::by_itself : Kind::none;
}

} // namespace

ToolkitOptions::ToolkitOptions(int argc, char** argv, const CLI::App& own) {
    const std::vector<char*> all(argv, argv + argc);
    std::size_t i = std::min<std::size_t>(1, all.size());
    arguments_.assign(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(i));
    rest_ = arguments_;
    for (; i < all.size(); ++i) {
        const std::string_view argument = all[i];
        if (argument.size() < 2 || argument.front() != '-' || argument == "--")
            break;
        const Kind kind = kind_of(argument);
        const bool is_own = kind == Kind::none || (kind == Kind::with_value && i + 1 == all.size());
        std::vector<char*>& into = is_own ? rest_ : arguments_;
        into.push_back(all[i]);
        names_display_ |=
            kind == Kind::with_value && (argument.ends_with("-display") || argument.ends_with("-platform"));
        const CLI::Option* option = is_own ? own.get_option_no_throw(std::string(argument)) : nullptr;
        const bool takes_next = kind == Kind::with_value || (option && option->get_items_expected_max() > 0);
        if (takes_next && i + 1 < all.size())
            into.push_back(all[++i]);
    }
    rest_.insert(rest_.end(), all.begin() + static_cast<std::ptrdiff_t>(i), all.end());
    count_ = static_cast<int>(arguments_.size());
    arguments_.push_back(nullptr);
    rest_.push_back(nullptr);
}

} // namespace vantaro::core
