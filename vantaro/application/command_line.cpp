#include "vantaro/application/command_line.h"

#include "vantaro/application/exit_status.h"
#include "vantaro/terminal/standard_output.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <sstream>

namespace vantaro::core {

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
    for (std::string line; std::getline(lines, line);)
        terminal.line(line);
    return code == 0 ? exit_status::done : exit_status::not_begun;
}

} // namespace vantaro::core
