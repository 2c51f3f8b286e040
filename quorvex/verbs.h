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

struct RunOptions {
    /// A script file, or the name of a saved script.
    std::string script;
    std::vector<std::string> paths;
    bool json = false;
};

/// Runs a script over the tracks.
int run(Session& session, const RunOptions& options);
/// Prints what a script would make of each track, and touches none.
int preview(Session& session, const RunOptions& options);
/// Prints the tags of the tracks.
int tags(Session& session, const std::vector<std::string>& paths, bool json);
/// Prints a title-formatting pattern, one line a track.
int format(Session& session, const std::string& pattern, const std::vector<std::string>& paths);
/// Prints the runs that can be taken back, newest first.
int runs(Session& session, bool json);
/// Takes a run back, the newest one when `number` is 0, and prints what came of it. With `times` the files
/// get their old times of change, too.
int undo(Session& session, std::uint64_t number, bool times, bool json);
/// Prints the registered kinds of actions.
int kinds(bool json);

/// Prints the names of the saved scripts.
int list_scripts();
/// Prints a saved script in the text form.
int show_script(const std::string& name);
/// Saves the script of a file; under its own name, or that of the file, when `name` is empty.
int import_script(Session& session, const std::string& path, std::string name);
/// Writes a saved script to a file: in the text form when its name ends in ".json", else in the byte form.
int export_script(const std::string& name, const std::string& path);
int delete_script(Session& session, const std::string& name);

} // namespace quorvex::command
