#include "vantaro/application/command_line.h"

#include "vantaro/application/exit_status.h"
#include "vantaro/terminal/standard_output.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <sstream>
#include <string_view>

namespace vantaro::core {

namespace {

/// At the end of an argument in brackets, so that the library does not see a list in it. What looks as if it
/// had one already gets another.
constexpr char guard = '\x01';

bool has_brackets(std::string_view text) {
    const std::size_t last = text.find_last_not_of(guard);
    return text.starts_with('[') && text[last] == ']';
}

std::string guarded(std::string text) {
    if (has_brackets(text))
        text += guard;
    return text;
}

std::string unguard(std::string& text) {
    if (has_brackets(text) && text.back() == guard)
        text.pop_back();
    return {};
}

void unguard_values(CLI::App& app) {
    for (CLI::Option* option : app.get_options())
        option->transform(CLI::Validator(unguard, ""));
    for (CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; }))
        unguard_values(*verb);
}

} // namespace

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

CLI::Option* add_arguments(CLI::App& app, const std::string& name, std::vector<std::string>& target,
                           const std::string& description) {
    // Not as a container, which the library would leave empty for "{}".
    const auto take = [&target](const CLI::results_t& arguments) {
        target = arguments;
        return true;
    };
    return app.add_option(name, take, description)
        ->expected(CLI::detail::expected_max_vector_size)
        ->type_name("");
}

void parse_arguments(CLI::App& app, int argc, char** argv) {
    unguard_values(app);
    std::vector<std::string> last_first;
    for (int i = argc - 1; i > 0; --i)
        last_first.push_back(guarded(argv[i]));
    app.parse(last_first);
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
