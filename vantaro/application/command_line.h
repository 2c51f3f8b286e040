// What the programs' main functions have in common.
//
//     int main(int argc, char** argv) {
//         return run_program("quorvex", [&] { return start(argc, argv); });
//     }
//
// Main thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Error;
} // namespace CLI

namespace vantaro::core {

/// Calls `program`, which returns an exit status. What it throws becomes a line and the status of nothing
/// begun; output that could not be written becomes a line and the status of something failed.
int run_program(const std::string& name, const std::function<int()>& program);

/// The arguments, but for the program's name, for CLI::App::parse. That takes "[a,b]" for two arguments, and
/// "++" for none: a mark before such arguments keeps them whole, and is taken off the values afterwards.
std::vector<std::string> guarded_arguments(int argc, const char* const* argv);
void take_guard_off(std::string& value);
void take_guard_off(std::vector<std::string>& values);

/// Prints the help text or version that was asked for, or what is wrong with the command line. Returns an
/// exit status.
int say_why_not_parsed(const CLI::App& app, const CLI::Error& error);

} // namespace vantaro::core
