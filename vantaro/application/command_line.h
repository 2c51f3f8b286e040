// What the programs' main functions have in common.
//
//     int main(int argc, char** argv) {
//         return run_program("quorvex", [&] { return start(argc, argv); });
//     }
//
// Main thread.
#pragma once

#include "vantaro/tags/tag_options.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Error;
class Option;
} // namespace CLI

namespace vantaro::core {

/// Calls `program`, which returns an exit status. What it throws becomes a line and the status of nothing
/// begun; output that could not be written becomes a line and the status of something failed.
int run_program(const std::string& name, const std::function<int()>& program);

/// Declares the arguments that are no options, such as paths: any number of them.
CLI::Option* add_arguments(CLI::App& app, const std::string& name, std::vector<std::string>& target,
                           const std::string& description);

/// Declares "--id3v2".
void add_id3v2_option(CLI::App& app, std::optional<Id3v2Policy>& target);

/// Parses the command line, every argument byte for byte: the library itself would take "[a, b]" for two,
/// "{}" and "++" for none. Called once for an `app`, whose lists are declared by add_arguments. Throws:
/// CLI::ParseError.
void parse_arguments(CLI::App& app, int argc, const char* const* argv);
/// The argument as it was given, of one that parsing has left over.
std::string given_argument(std::string left_over);

/// Prints the help text or version that was asked for, or what is wrong with the command line. Returns an
/// exit status.
int say_why_not_parsed(const CLI::App& app, const CLI::Error& error);

} // namespace vantaro::core
