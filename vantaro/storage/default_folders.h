// Where this user's configuration and state lie when nothing else is said.
//
//     ComponentConfiguration configuration(default_config_dir(), "example.so");
//
// Any thread, while no other one changes the environment. The folders need not exist.
#pragma once

#include <string>

namespace vantaro::core {

/// $XDG_CONFIG_HOME/vantaro, or $HOME/.config/vantaro. A variable whose value is no absolute path counts as
/// not set; without HOME the user database says where home is. Empty when there is no home folder at all:
/// whatever needs the folder fails with `no_home_folder`, and nothing else does.
std::string default_config_dir();

/// The same with $XDG_STATE_HOME/vantaro and $HOME/.local/state/vantaro.
std::string default_state_dir();

inline constexpr const char* no_home_folder = "There is no home folder; set the variable HOME";

} // namespace vantaro::core
