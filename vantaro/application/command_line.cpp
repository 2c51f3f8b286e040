#include "vantaro/application/command_line.h"

#include "vantaro/application/exit_status.h"
#include "vantaro/terminal/standard_output.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <sstream>
#include <string_view>

namespace vantaro::core {

namespace {

constexpr char guard = '\x01';

/// Words, numbers, options and most paths mean what they say.
bool needs_guard(const std::string& argument) {
    constexpr std::string_view harmless = "-./_";
    const auto first = argument.empty() ? '-' : argument.front();
    const bool is_word =
        (first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z') || (first >= '0' && first <= '9');
    return !is_word && harmless.find(first) == std::string_view::npos;
}

} // namespace

std::vector<std::string> guarded_arguments(int argc, const char* const* argv) {
    std::vector<std::string> arguments;
    for (int i = argc - 1; i > 0; --i) { // the last one first
        std::string& argument = arguments.emplace_back(argv[i]);
        if (needs_guard(argument))
            argument.insert(0, 1, guard);
    }
    return arguments;
}

void take_guard_off(std::string& value) {
    if (value.starts_with(guard))
        value.erase(0, 1);
}

void take_guard_off(std::vector<std::string>& values) {
    for (std::string& value : values)
        take_guard_off(value);
}

int run_program(const std::string& name, const std::function<int()>& program) {
    provide_standard_streams();
    Terminal terminal;
    int status = exit_status::not_begun;
    try {
        status = program();
    } catch (const std::exception& error) {
        terminal.line(name + ": " + error.what());
    }
    if (!end_output(terminal) && status == exit_status::done)
        status = exit_status::some_failed;
    return status;
}

int say_why_not_parsed(const CLI::App& app, const CLI::Error& error) {
    std::ostringstream output;
    std::ostringstream errors;
    const int code = app.exit(error, output, errors);
    print_output(output.str());
    Terminal terminal;
    std::istringstream lines(errors.str());
    for (std::string line; std::getline(lines, line);) {
        std::erase(line, guard);
        terminal.line(line);
    }
    return code == 0 ? exit_status::done : exit_status::not_begun;
}

} // namespace vantaro::core
