#include "vantaro/storage/default_folders.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace vantaro::core {

namespace {

/// The value when it is an absolute path, else nothing.
std::string absolute_path_in(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && value[0] == '/' ? value : "";
}

std::string home() {
    if (std::string path = absolute_path_in("HOME"); !path.empty())
        return path;
    std::array<char, 16384> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr
        && found->pw_dir != nullptr && found->pw_dir[0] == '/')
        return found->pw_dir;
    return {};
}

std::string folder(const char* variable, const char* below_home) {
    std::string base = absolute_path_in(variable);
    if (!base.empty())
        return base.append("/vantaro");
    base = home();
    return base.empty() ? base : base.append(below_home).append("/vantaro");
}

} // namespace

std::string default_config_dir() {
    return folder("XDG_CONFIG_HOME", "/.config");
}

std::string default_state_dir() {
    return folder("XDG_STATE_HOME", "/.local/state");
}

} // namespace vantaro::core
