#include "vantaro/storage/default_folders.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace vantaro::core {
namespace {

/// A variable of the environment with another value, or none, while it exists.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name))
            before_ = before;
        set(value);
    }
    ~Variable() { set(before_ ? before_->c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void set(const char* value) { value != nullptr ? ::setenv(name_, value, 1) : ::unsetenv(name_); }

    const char* name_;
    std::optional<std::string> before_;
};

TEST(DefaultFolders, FollowTheEnvironment) {
    const struct {
        const char* xdg;
        const char* home;
        const char* config;
        const char* state;
    } rows[] = {
        {"/x", "/h", "/x/vantaro", "/x/vantaro"},
        {nullptr, "/h", "/h/.config/vantaro", "/h/.local/state/vantaro"},
        {"", "/h", "/h/.config/vantaro", "/h/.local/state/vantaro"},
        {"x/y", "/h", "/h/.config/vantaro", "/h/.local/state/vantaro"},
    };
    for (const auto& row : rows) {
        const Variable config("XDG_CONFIG_HOME", row.xdg);
        const Variable state("XDG_STATE_HOME", row.xdg);
        const Variable home("HOME", row.home);
        EXPECT_EQ(default_config_dir(), row.config);
        EXPECT_EQ(default_state_dir(), row.state);
    }
    const Variable config("XDG_CONFIG_HOME", nullptr);
    for (const char* unusable : {"", "home"}) {
        const Variable home("HOME", unusable);
        EXPECT_TRUE(default_config_dir().starts_with('/')) << default_config_dir();
    }
}

} // namespace
} // namespace vantaro::core
