#include "vantaro/application/command_line.h"

#include "vantaro/application/exit_status.h"
#include "vantaro/terminal/standard_output.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <sstream>
#include <string_view>

namespace vantaro::core {

namespace {

/// In front of an argument, so that the library sees nothing of its own in it.
constexpr char guard = '\x01';

/// Words, numbers, options and most paths mean what they say.
bool needs_guard(std::string_view argument) {
    constexpr std::string_view harmless = "-./_";
    const char first = argument.empty() ? '-' : argument.front();
    const bool is_word =
        (first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z') || (first >= '0' && first <= '9');
    return !is_word && harmless.find(first) == std::string_view::npos;
}

std::string unguard(std::string& text) {
    if (text.starts_with(guard))
        text.erase(0, 1);
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

void add_id3v2_option(CLI::App& app, std::optional<Id3v2Policy>& target) {
    app.add_option_function<std::string>(
           "--id3v2", [&target](const std::string& name) { target = id3v2_policy(name); },
           "Version of ID3v2 that is written: a tag keeps its own, but 2.3 becomes 2.4 for several values of "
           "a "
           "field (as-needed); keeps it, and 2.3 has several values joined (keep); the same, and new tags "
           "are "
           "2.3 (2.3); edited and new tags are 2.4 (2.4)")
        ->type_name("VERSION")
        ->check(CLI::Validator(
            [](const std::string& text) {
                return id3v2_policy(text) ? std::string()
                                          : '"' + text + "\" is none of as-needed, keep, 2.3 and 2.4";
            },
            ""));
}

void parse_arguments(CLI::App& app, int argc, const char* const* argv) {
    unguard_values(app);
    std::vector<std::string> last_first;
    for (int i = argc - 1; i > 0; --i)
        last_first.push_back(needs_guard(argv[i]) ? guard + std::string(argv[i]) : argv[i]);
    app.parse(last_first);
}

std::string given_argument(std::string left_over) {
    unguard(left_over);
    return left_over;
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
