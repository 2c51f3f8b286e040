// The verbs of the command `quorvex`. Each does its work and returns the exit status; what keeps it from
// beginning (a script that cannot be read, a name that is not there) it throws, with a text that says what it
// is about.
//
// Main thread only.
#pragma once

#include "vantaro/application/host.h"
#include "vantaro/terminal/terminal.h"
#include "vantaro/terminal/update_lines.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::command {

/// What the verbs work with.
struct Session {
    vantaro::core::Host& host;
    vantaro::core::Terminal& terminal;
    /// Watches the updates that follow.
    std::unique_ptr<vantaro::core::UpdateWatcher>& next_watcher;
};

/// What the work is about.
struct PathOptions {
    std::vector<std::string> paths;
    /// A file with more of them, a line each; "-" for standard input.
    std::optional<std::string> files_from;
    /// In that file, each ends with a NUL in place of a line break.
    bool null_separated = false;
};

struct RunOptions {
    /// A script file, "-" for standard input, or the name of a saved script.
    std::string script;
    PathOptions paths;
    bool json = false;
    /// For previews: only the tracks that change.
    bool only_changed = false;
};

/// Runs a script over the tracks.
int run(Session& session, const RunOptions& options);
/// Prints what a script would make of each track, and touches none.
int preview(Session& session, const RunOptions& options);
/// Prints the tags of the tracks.
int tags(Session& session, const PathOptions& paths, bool json);
/// Prints a title-formatting pattern, one line a track.
int format(Session& session, const std::string& pattern, const PathOptions& paths);
/// Prints the runs that can be taken back, newest first.
int runs(Session& session, bool json);
/// Prints the files that a run has changed. Throws: vantaro_io::exception_io when there is no such run.
int files_of_run(Session& session, std::uint64_t number, bool json);
/// Takes a run back, the newest one when `number` is 0, and prints what came of it. With `times` the files
/// get their old times of change, too.
int undo(Session& session, std::uint64_t number, bool times, bool json);
/// Prints the registered kinds of actions, and the settings that scripts give them.
int kinds(bool json);

/// Prints the names of the saved scripts.
int list_scripts();
/// Prints a saved script in the text form.
int show_script(const std::string& name);
/// Saves the script of a file ("-": of standard input), under the name of the file without its extension when
/// `name` is empty. A saved script of that name is replaced only with `replace`, or when somebody at the
/// terminal says so.
int import_script(Session& session, const std::string& path, std::string name, bool replace);
/// Writes a saved script to a file: in the text form when its name ends in ".json", else in the byte form.
int export_script(const std::string& name, const std::string& path);
int delete_script(Session& session, const std::string& name);

} // namespace quorvex::command
