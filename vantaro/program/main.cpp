// The host program. With arguments that a component takes ("/tag:title=x"), or a command of the context menu
// to carry out, it does the work and exits. Otherwise it shows its window.

#include "host/api/exceptions.h"
#include "vantaro/application/argument_distributor.h"
#include "vantaro/application/command_line.h"
#include "vantaro/application/context_menu.h"
#include "vantaro/application/exit_status.h"
#include "vantaro/application/terminal_host.h"
#include "vantaro/common/own_program.h"
#include "vantaro/desktop/desktop.h"
#include "vantaro/locations/location_text.h"
#include "vantaro/program/toolkit_options.h"
#include "vantaro/terminal/standard_output.h"
#include "vantaro/terminal/update_lines.h"

#include <CLI/CLI.hpp>

#include <QCoreApplication>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace vantaro::core {
namespace {

void print(const std::string& line) {
    print_output(printable(line) + '\n');
}

int list_menu(Host& host) {
    for (const MenuCommand& command : context_menu(host, {}, menu_caller::command_list))
        print(path_of(command) + "  " + to_text(command.guid));
    return exit_status::done;
}

class CollectTracks final : public TrackSink {
public:
    void add(TrackHandle* track) override { tracks.push_back(track); }
    std::vector<TrackHandle*> tracks;
};

/// The exit status of work that has come to its end.
int status_of(Host& host, bool has_done_any) {
    if (host.tag_io().has_failures())
        return exit_status::some_failed;
    if (host.undone_count() == 0)
        return exit_status::done;
    return has_done_any ? exit_status::some_failed : exit_status::not_begun;
}

/// Carries out one command of the context menu on the tracks.
int run_menu_command(TerminalHost& program, const std::string& path_or_guid,
                     const std::vector<std::string>& paths) {
    Host& host = program.host();
    Terminal& terminal = program.terminal();
    if (paths.empty()) {
        terminal.line("No files were named that " + path_or_guid + " is for.");
        return exit_status::not_begun;
    }
    CollectTracks collected;
    AbortSignal abort; // the host adds its own
    for (const std::string& path : paths) {
        try {
            host.tag_io().resolve_location(path.c_str(), collected, abort);
        } catch (const vantaro_io::exception_io& error) {
            terminal.line(error.what());
        }
    }
    if (collected.tracks.empty()) {
        terminal.line("There are no tracks for " + path_or_guid + '.');
        return exit_status::not_begun;
    }
    const auto commands = context_menu(host, collected.tracks, {});
    const MenuCommand* command = find_command(commands, path_or_guid);
    if (!command) {
        terminal.line(path_or_guid + ": there is no such command; --list-menu lists them.");
        return exit_status::not_begun;
    }
    // Commands find the tags in memory, as those of a list on the screen are.
    std::vector<Track*> own_tracks;
    for (TrackHandle* track : collected.tracks)
        own_tracks.push_back(static_cast<Track*>(track));
    host.tag_io().read_tags_of(own_tracks, TagIO::Hold::yes,
                               std::make_unique<UpdateProgress>(terminal, "Reading"));
    host.wait_until_idle();
    if (host.interrupt().is_aborting())
        return exit_status::interrupted;
    host.tag_io().set_activity(path_of(*command));
    command->node->execute(collected.tracks.data(), collected.tracks.size());
    host.wait_until_idle();
    const bool has_begun = host.tag_io().started_updates() > 0;
    if (!has_begun && program.question().is_declined())
        host.report_undone("Nothing was done.");
    return host.undone_count() > 0 && !has_begun ? exit_status::not_begun : status_of(host, true);
}

int say_nothing_to_do(Terminal& terminal) {
    terminal.line("Nothing to do: name a command before the files; /tag:help lists the commands.");
    return exit_status::not_begun;
}

/// What came of the arguments.
struct Distributed {
    bool has_taken_any = false;
    int status = exit_status::done;
};

Distributed distribute(Host& host, const TerminalMessage& message,
                       const std::vector<std::string>& arguments) {
    ArgumentDistributor distributor(host, [&] { return message.shown(); });
    for (const std::string& argument : arguments)
        if (!host.interrupt().is_aborting())
            distributor.offer(argument);
    // Half the files that a command is for are not what it was asked for.
    if (!host.interrupt().is_aborting())
        distributor.finish();
    host.wait_until_idle();
    const std::vector<std::string>& left_over = distributor.left_over();
    if (distributor.has_taken_any() && !left_over.empty())
        host.report_undone(left_over.front()
                           + (left_over.size() > 1 ? " and " + std::to_string(left_over.size() - 1) + " more"
                                                   : std::string())
                           + ": Nothing was done here, since no command is named before.");
    return {distributor.has_taken_any(), status_of(host, distributor.has_done_any())};
}

/// The arguments that the window can show. Something else among them is a mistake, unless nothing is right.
bool name_any_files(const std::vector<std::string>& arguments) {
    return std::ranges::any_of(arguments, [](const std::string& argument) {
        std::error_code error;
        return starts_with_ignoring_case(argument, "file://") || std::filesystem::exists(argument, error);
    });
}

/// Starts the program over, as one with a window. Components are not made to be loaded a second time, and the
/// toolkit's two kinds of applications do not follow each other in one process. What was `reported` goes
/// along, to be seen in the window. Throws: std::system_error; otherwise it does not return.
[[noreturn]] void start_over_with_window(const std::vector<char*>& arguments,
                                         const std::vector<std::string>& reported) {
    std::vector<std::string> options{"--window"};
    for (const std::string& line : reported)
        options.push_back("--reported=" + line);
    std::vector<char*> all{arguments.front()};
    for (std::string& option : options)
        all.push_back(option.data());
    all.insert(all.end(), arguments.begin() + 1, arguments.end());
    all.push_back(nullptr);
    ::execv(own_program().c_str(), all.data());
    throw std::system_error(errno, std::generic_category(), "The window cannot be opened");
}

/// What the command line says.
struct CommandLine {
    HostSetup setup;
    std::vector<std::string> arguments;
    bool list = false;
    bool yes = false;
    bool window = false;
    std::string menu_command;
};

/// What is left for a window.
struct ForWindow {
    /// There is nothing to do in the terminal, and a window can be opened.
    bool is_wanted = false;
    std::vector<std::string> reported;
};

/// In the terminal.
int run_in_terminal(int& argc, char** argv, const CommandLine& line, bool can_show, ForWindow& for_window) {
    QCoreApplication qt(argc, argv);
    TerminalHost program(line.setup, line.yes);
    Host& host = program.host();
    host.load_components();

    int status = exit_status::done;
    try {
        if (line.list) {
            status = list_menu(host);
        } else if (!line.menu_command.empty()) {
            status = run_menu_command(program, line.menu_command, line.arguments);
        } else {
            const Distributed distributed = distribute(host, program.message(), line.arguments);
            status = distributed.status;
            if (!distributed.has_taken_any && !host.interrupt().is_aborting()) {
                for_window = {can_show && name_any_files(line.arguments), host.reported()};
                if (!for_window.is_wanted)
                    status = say_nothing_to_do(program.terminal());
            }
        }
    } catch (const vantaro_io::exception_aborted&) {
        status = exit_status::interrupted;
    }
    host.save_configurations();
    host.close();
    return host.interrupt().is_aborting() ? exit_status::interrupted : status;
}

int run_with_window(ToolkitOptions& toolkit, const CommandLine& line) {
    if (has_display() || toolkit.names_display())
        return run_desktop(toolkit.count(), toolkit.arguments(), line.setup, line.arguments);
    Terminal().line("vantaro: There is no display to open a window on.");
    return exit_status::not_begun;
}

int run(int argc, char** argv) {
    CLI::App options(
        "Vantaro edits the tags of music files.\n\n"
        "ARGUMENT is a command of a component, such as '/tag:genre=Jazz', followed by the files, folders "
        "and playlists that it is for; /tag:help lists the commands. Without a command a window shows the "
        "files.",
        "vantaro");
    CommandLine line;
    options.add_option("--config-dir", line.setup.config_dir, "Folder of the stored settings")
        ->type_name("DIR");
    options.add_option("--components", line.setup.component_dir, "Folder of the components")
        ->type_name("DIR");
    options.add_option("--jobs", line.setup.jobs, "Files to read and to write at a time")
        ->type_name("N")
        ->check(CLI::Range(1, 64));
    options
        .add_option("--code-page", line.setup.code_page,
                    "Character set of file names and cue sheets that are not UTF-8")
        ->type_name("NAME");
    add_id3v2_option(options, line.setup.id3v2);
    options
        .add_option("--menu", line.menu_command,
                    "Carry out a command of the context menu, given by its path or GUID, on the files")
        ->type_name("COMMAND");
    options.add_flag("--list-menu", line.list, "List the commands of the context menu");
    // How the program starts itself over; nothing for the help text.
    options.add_flag("--window", line.window)->group("");
    options.add_option("--reported", line.setup.reported)->group("")->allow_extra_args(false);
    options.add_flag("--yes", line.yes, "Answer every question with yes");
    add_arguments(options, "ARGUMENT", line.arguments, "Commands and files");
    options.set_version_flag("--version", std::string("Vantaro ") + host_version);
    ToolkitOptions toolkit(argc, argv, options);
    try {
        parse_arguments(options, toolkit.rest_count(), toolkit.rest());
    } catch (const CLI::ParseError& error) {
        return say_why_not_parsed(options, error);
    }

    // Qt takes arguments of its own out of the list.
    const std::vector<char*> all_arguments(argv, argv + argc);
    const bool names_nothing = line.arguments.empty() && !line.list && line.menu_command.empty();
    const bool can_show = has_display() || toolkit.names_display();
    if (line.window || (names_nothing && can_show))
        return run_with_window(toolkit, line);
    ForWindow for_window;
    const int status = run_in_terminal(argc, argv, line, can_show, for_window);
    if (for_window.is_wanted)
        start_over_with_window(all_arguments, for_window.reported);
    return status;
}

} // namespace
} // namespace vantaro::core

int main(int argc, char** argv) {
    return vantaro::core::run_program("vantaro", [&] { return vantaro::core::run(argc, argv); });
}
