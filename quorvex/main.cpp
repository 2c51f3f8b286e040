// The command for terminals and servers. It links the component in place of loading it, so that it can use
// the component's own parts, and loads whatever other components there are.

#include "component/entry/client.h"
#include "component/own_services.h"
#include "quorvex/input.h"
#include "quorvex/nearest_word.h"
#include "quorvex/verbs.h"
#include "vantaro/application/command_line.h"
#include "vantaro/application/exit_status.h"
#include "vantaro/application/terminal_host.h"
#include "vantaro/terminal/standard_output.h"

#include <CLI/CLI.hpp>

#include <QCoreApplication>

#include <cstdint>

namespace quorvex::command {
namespace {

namespace core = vantaro::core;

using Verb = std::function<int(Session&)>;

/// What the command line says.
struct Options {
    core::HostSetup setup;
    bool yes = false;
    bool json = false;
    bool dry_run = false;
    bool times = false;
    std::uint64_t run = 0;
    std::string script;
    std::string pattern;
    std::string name;
    std::string file;
    bool replace = false;
    bool only_changed = false;
    std::string files_from;
    PathOptions paths;

    RunOptions run_options() const { return {script, paths, json, only_changed}; }
    void complete() {
        if (!files_from.empty())
            paths.files_from = files_from;
    }
};

/// Declares the command line. `chosen` becomes the verb that it names; both outlive the parsing.
class CommandLine {
public:
    CommandLine(CLI::App& app, Options& options, Verb& chosen) : options_(options), chosen_(chosen) {
        app.require_subcommand(1);
        app.fallthrough();
        app.set_version_flag("--version", std::string(component_name) + ' ' + component_version);
        app.add_option("--config-dir", options.setup.config_dir, "Folder of the stored settings")
            ->type_name("DIR");
        app.add_option("--components", options.setup.component_dir, "Folder of the components")
            ->type_name("DIR");
        app.add_option("--jobs", options.setup.jobs, "Files to read and to write at a time")
            ->type_name("N")
            ->check(CLI::Range(1, 64));
        app.add_option("--code-page", options.setup.code_page,
                       "Character set of file names and cue sheets that are not UTF-8")
            ->type_name("NAME");
        declare_tracks(app);
        declare_runs(app);
        declare_scripts(app);
    }

private:
    CLI::App& verb(CLI::App& parent, const char* name, const char* description, const Verb& action) {
        CLI::App* declared = parent.add_subcommand(name, description);
        declared->callback([this, action] { chosen_ = action; });
        return *declared;
    }
    void text(CLI::App& verb, const char* name, std::string& target, const char* description) {
        verb.add_option(name, target, description)->required()->type_name("");
    }
    void paths(CLI::App& verb) {
        Options& options = options_;
        core::add_arguments(verb, "PATH", options.paths.paths, "Files, folders and playlists");
        CLI::Option* list = verb.add_option("--files-from", options.files_from,
                                            "Take more paths from a file, one a line (-: standard input)");
        list->type_name("FILE")->check(CLI::Validator(
            [](const std::string& text) { return text.empty() ? "FILE has no name" : std::string(); }, ""));
        verb.add_flag("-0,--null", options.paths.null_separated,
                      "Paths in that file end with a NUL, as \"find -print0\" prints them")
            ->needs(list);
        verb.parse_complete_callback([&options] {
            if (options.paths.paths.empty() && options.files_from.empty())
                throw CLI::RequiredError("PATH");
            if (options.script == standard_input && options.files_from == standard_input)
                throw CLI::ValidationError("Standard input cannot be both the script and the list of paths");
        });
    }
    void json(CLI::App& verb) { verb.add_flag("--json", options_.json, "Print one JSON object a line"); }
    void yes(CLI::App& verb) { verb.add_flag("--yes", options_.yes, "Answer every question with yes"); }
    void script(CLI::App& verb) {
        text(verb, "SCRIPT", options_.script,
             "A script file (*.qvx or JSON; -: standard input), or the name of a saved script");
    }

    void run_number(CLI::App& verb, const char* description) {
        verb.add_option("RUN", options_.run, description)
            ->type_name("")
            ->check(CLI::Validator(
                [](const std::string& text) {
                    const bool is_number = text.find_first_not_of("0123456789") == std::string::npos
                                           && text.find_first_not_of('0') != std::string::npos;
                    return is_number ? std::string() : '"' + text + "\" is no number of a run";
                },
                ""));
    }

    void declare_tracks(CLI::App& app) {
        Options& options = options_;
        CLI::App& run_verb = verb(app, "run", "Run a script over tracks", [&options](Session& session) {
            return options.dry_run ? preview(session, options.run_options())
                                   : run(session, options.run_options());
        });
        CLI::Option* dry_run =
            run_verb.add_flag("--dry-run", options.dry_run, "Print what would change, and change nothing");
        run_verb.add_flag("--changed", options.only_changed, "Print only the tracks that change")
            ->needs(dry_run);
        core::add_id3v2_option(run_verb, options.setup.id3v2);
        yes(run_verb);
        json(run_verb);
        script(run_verb);
        paths(run_verb);

        CLI::App& preview_verb =
            verb(app, "preview", "Print what a script would change",
                 [&options](Session& session) { return preview(session, options.run_options()); });
        preview_verb.add_flag("--changed", options.only_changed, "Print only the tracks that change");
        core::add_id3v2_option(preview_verb, options.setup.id3v2);
        yes(preview_verb);
        json(preview_verb);
        script(preview_verb);
        paths(preview_verb);

        CLI::App& tags_verb = verb(app, "tags", "Print the tags of tracks", [&options](Session& session) {
            return tags(session, options.paths, options.json);
        });
        json(tags_verb);
        paths(tags_verb);

        CLI::App& format_verb =
            verb(app, "format", "Print a title-formatting pattern, one line a track",
                 [&options](Session& session) { return format(session, options.pattern, options.paths); });
        text(format_verb, "PATTERN", options.pattern, "The pattern, such as '%artist% - %title%'");
        paths(format_verb);
    }

    void declare_runs(CLI::App& app) {
        Options& options = options_;
        CLI::App& runs_verb =
            verb(app, "runs", "Print the runs that can be undone, newest first, or the files of one",
                 [&options](Session& session) {
                     return options.run == 0 ? runs(session, options.json)
                                             : files_of_run(session, options.run, options.json);
                 });
        json(runs_verb);
        run_number(runs_verb, "Number of a run, whose files are printed");
        CLI::App& undo_verb =
            verb(app, "undo", "Give every file of a run its old bytes back", [&options](Session& session) {
                return undo(session, options.run, options.times, options.json);
            });
        run_number(undo_verb, "Number of a run; without it, the newest that was not undone");
        undo_verb.add_flag("--times", options.times, "Give the files their old times of change, too");
        json(undo_verb);
    }

    void declare_scripts(CLI::App& app) {
        Options& options = options_;
        CLI::App& kinds_verb =
            verb(app, "kinds", "Print the kinds of actions that scripts may hold, and their settings",
                 [&options](Session&) { return kinds(options.json); });
        json(kinds_verb);

        CLI::App* scripts = app.add_subcommand("scripts", "The saved scripts");
        scripts->require_subcommand(1);
        verb(*scripts, "list", "Print their names", [](Session&) { return list_scripts(); });
        CLI::App& show = verb(*scripts, "show", "Print one in its text form",
                              [&options](Session&) { return show_script(options.name); });
        text(show, "NAME", options.name, "Name of a saved script");
        CLI::App& import =
            verb(*scripts, "import", "Save the script of a file", [&options](Session& session) {
                return import_script(session, options.file, options.name, options.replace);
            });
        text(import, "FILE", options.file, "A script file (*.qvx or JSON; -: standard input)");
        import.add_option("--name", options.name, "Save it under this name, not that of the file")
            ->type_name("NAME");
        import.add_flag("--replace", options.replace, "Replace a saved script of that name");
        CLI::App& export_verb =
            verb(*scripts, "export", "Write one to a file (*.qvx, or *.json for the text form)",
                 [&options](Session&) { return export_script(options.name, options.file); });
        text(export_verb, "NAME", options.name, "Name of a saved script");
        text(export_verb, "FILE", options.file, "The file, which is replaced if it is there");
        CLI::App& delete_verb = verb(*scripts, "delete", "Delete one", [&options](Session& session) {
            return delete_script(session, options.name);
        });
        text(delete_verb, "NAME", options.name, "Name of a saved script");
    }

    Options& options_;
    Verb& chosen_;
};

/// The command whose verbs those are that the command line chooses from in the end.
CLI::App& innermost(CLI::App& app) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return chosen.empty() ? app : innermost(*chosen.back());
}

/// Says which word is no verb. Returns false where that is not what is wrong.
bool say_unknown_verb(CLI::App& app) {
    const CLI::App& asked = innermost(app);
    const std::vector<const CLI::App*> verbs = asked.get_subcommands([](const CLI::App*) { return true; });
    const std::vector<std::string> unknown = app.remaining(true);
    if (verbs.empty() || unknown.empty() || unknown.front().starts_with('-'))
        return false;
    const std::string word = core::given_argument(unknown.front());
    std::vector<std::string> names;
    names.reserve(verbs.size());
    for (const CLI::App* verb : verbs)
        names.push_back(verb->get_name());
    const std::string* meant = nearest_word(word, names);
    const std::string program = &asked == &app ? "quorvex" : "quorvex " + asked.get_name();
    core::Terminal().line(
        "quorvex: There is no verb \"" + word + "\"; "
        + (meant ? "did you mean \"" + *meant + "\"?" : '"' + program + " --help\" lists them."));
    return true;
}

int say_what_is_wrong(CLI::App& app, const CLI::ParseError& error) {
    const bool has_no_verb = !innermost(app).get_subcommands([](const CLI::App*) { return true; }).empty();
    if (error.get_exit_code() != 0 && has_no_verb) {
        if (say_unknown_verb(app))
            return core::exit_status::not_begun;
        const bool is_bare = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
        if (is_bare && app.remaining(true).empty()) {
            core::print_output(app.help());
            return core::exit_status::not_begun;
        }
    }
    if (const std::vector<std::string> unknown = app.remaining(true); !unknown.empty())
        core::Terminal().line("quorvex: \"" + core::given_argument(unknown.front())
                              + "\" is not known here.");
    return core::say_why_not_parsed(app, error);
}

int start(int argc, char** argv) {
    CLI::App app("Edits the tags of many music files at once with scripts of actions.", "quorvex");
    Options options;
    Verb verb;
    CommandLine command_line(app, options, verb);
    try {
        core::parse_arguments(app, argc, argv);
    } catch (const CLI::ParseError& error) {
        return say_what_is_wrong(app, error);
    }
    options.complete();

    std::unique_ptr<core::UpdateWatcher> next_watcher;
    options.setup.make_watcher = [&](std::size_t, vantaro::WindowHandle) { return std::move(next_watcher); };
    QCoreApplication qt(argc, argv);
    core::TerminalHost program(options.setup, options.yes);
    core::Host& host = program.host();
    host.add_built_in(vantaro_get_interface, "vnt_quorvex.dll");
    host.load_components();
    Session session{host, program.terminal(), next_watcher};
    int status = core::exit_status::not_begun;
    try {
        status = verb(session);
    } catch (const vantaro_io::exception_io& error) {
        host.report_once(error.what()); // the start may have met the same
    } catch (const vantaro_io::exception_aborted&) {
        status = core::exit_status::interrupted;
    }
    host.close();
    return status;
}

} // namespace
} // namespace quorvex::command

int main(int argc, char** argv) {
    return vantaro::core::run_program("quorvex", [&] { return quorvex::command::start(argc, argv); });
}
