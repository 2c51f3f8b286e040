// The host program. With arguments that a component takes ("/tag:title=x"), or a command of the context menu
// to carry out, it does the work and exits.

#include "vantaro/application/argument_distributor.h"
#include "vantaro/application/context_menu.h"
#include "vantaro/application/exit_status.h"
#include "vantaro/application/host.h"
#include "vantaro/terminal/terminal.h"
#include "vantaro/terminal/update_lines.h"

#include <CLI/CLI.hpp>

#include <QCoreApplication>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace vantaro::core {
namespace {

void print(const std::string& line) {
    std::fputs((printable(line) + '\n').c_str(), stdout);
}

int list_menu(Host& host) {
    for (const MenuCommand& command : context_menu(host, {}, menu_caller::command_list))
        print(command.path + "  " + to_text(command.guid));
    return exit_status::done;
}

class CollectTracks final : public TrackSink {
public:
    void add(TrackHandle* track) override { tracks.push_back(track); }
    std::vector<TrackHandle*> tracks;
};

/// Carries out one command of the context menu on the tracks.
int run_menu_command(Host& host, Terminal& terminal, const std::string& path_or_guid,
                     const std::vector<std::string>& paths) {
    CollectTracks collected;
    AbortSignal abort; // the host adds its own
    for (const std::string& path : paths) {
        try {
            host.tag_io().resolve_location(path.c_str(), collected, abort);
        } catch (const std::exception& error) {
            terminal.line(error.what());
        }
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
    if (!host.interrupt().is_aborting())
        command->node->execute(collected.tracks.data(), collected.tracks.size());
    host.wait_until_idle();
    return host.tag_io().has_failures() ? exit_status::some_failed : exit_status::done;
}

int distribute(Host& host, Terminal& terminal, const TerminalMessage& message,
               const std::vector<std::string>& arguments) {
    ArgumentDistributor distributor(host, [&] { return message.shown(); });
    for (const std::string& argument : arguments)
        if (!host.interrupt().is_aborting())
            distributor.offer(argument);
    distributor.finish();
    host.wait_until_idle();
    if (!distributor.has_taken_any()) {
        terminal.line("Nothing to do: name a command before the files; /tag:help lists the commands.");
        return exit_status::not_begun;
    }
    return host.tag_io().has_failures() ? exit_status::some_failed : exit_status::done;
}

/// What the user asked for, without the files.
std::string joined_commands(const std::vector<std::string>& arguments) {
    std::string result;
    for (const std::string& argument : arguments)
        if (argument.starts_with('/') && argument.find('/', 1) == std::string::npos)
            result += (result.empty() ? "" : " ") + argument;
    return result;
}

int run(int argc, char** argv) {
    CLI::App options(
        "Vantaro edits the tags of music files.\n\n"
        "ARGUMENT is a command of a component, such as '/tag:genre=Jazz', followed by the files, folders "
        "and playlists that it is for; /tag:help lists the commands.",
        "vantaro");
    HostSetup setup;
    std::vector<std::string> arguments;
    options.add_option("--config-dir", setup.config_dir, "Folder of the stored settings")->type_name("DIR");
    options.add_option("--components", setup.component_dir, "Folder of the components")->type_name("DIR");
    options.add_option("--jobs", setup.jobs, "Files to read and to write at a time")
        ->type_name("N")
        ->check(CLI::Range(1, 64));
    bool list = false;
    bool yes = false;
    std::string menu_command;
    options.add_option("--code-page", setup.code_page, "Character set of cue sheets that are not UTF-8")
        ->type_name("NAME");
    options
        .add_option("--menu", menu_command,
                    "Carry out a command of the context menu, given by its path or GUID, on the files")
        ->type_name("COMMAND");
    options.add_flag("--list-menu", list, "List the commands of the context menu");
    options.add_flag("--yes", yes, "Answer every question with yes");
    options.add_option("ARGUMENT", arguments, "Commands and files")->type_name("");
    options.set_version_flag("--version", std::string("Vantaro ") + host_version);
    try {
        options.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return options.exit(error) == 0 ? exit_status::done : exit_status::not_begun;
    }

    Interrupt interrupt;
    Terminal terminal;
    TerminalConsole console(terminal);
    TerminalMessage message;
    TerminalQuestion question(terminal, yes);
    setup.interrupt = &interrupt;
    setup.console = &console;
    setup.message = &message;
    setup.question = &question;
    setup.make_watcher = [&](std::size_t, WindowHandle) {
        return std::make_unique<UpdateLines>(terminal, "Updating");
    };
    QCoreApplication qt(argc, argv);
    Host host(setup);
    host.load_components();

    host.tag_io().set_activity(menu_command.empty() ? joined_commands(arguments) : menu_command);
    const int status = list                    ? list_menu(host)
                       : !menu_command.empty() ? run_menu_command(host, terminal, menu_command, arguments)
                                               : distribute(host, terminal, message, arguments);
    host.save_configurations();
    host.close();
    return interrupt.flag().is_aborting() ? exit_status::interrupted : status;
}

} // namespace
} // namespace vantaro::core

int main(int argc, char** argv) {
    try {
        return vantaro::core::run(argc, argv);
    } catch (const std::exception& error) {
        vantaro::core::Terminal().line(std::string("vantaro: ") + error.what());
        return vantaro::core::exit_status::not_begun;
    }
}
