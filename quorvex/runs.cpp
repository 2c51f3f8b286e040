#include "quorvex/output.h"
#include "quorvex/verbs.h"

#include "host/api/exceptions.h"
#include "vantaro/application/exit_status.h"
#include "vantaro/journal/shrink.h"
#include "vantaro/terminal/terminal.h"

#include <map>

namespace quorvex::command {

using namespace vantaro;

namespace {

std::string files_text(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " file" : " files");
}

/// Empty where the journal is damaged.
std::string path_of(const core::OpenFile& journal, std::uint64_t position) {
    try {
        return core::read_change(journal, position).change.path;
    } catch (const vantaro_io::exception_io&) {
        return {};
    }
}

} // namespace

int runs(Session& session, bool json) {
    const std::vector<core::RunSummary> found = session.host.runs().runs();
    std::map<std::uint64_t, core::RunSummary> undone_by;
    for (const core::RunSummary& run : found) {
        if (run.start.undoes != 0)
            undone_by[run.start.undoes] = run;
        const auto undone = undone_by.find(run.number);
        if (json) {
            Json object{{"run", run.number},
                        {"time", run.start.time},
                        {"activity", run.start.activity},
                        {"files", run.files},
                        {"bytes", run.bytes}};
            if (run.start.undoes != 0)
                object["undoes"] = run.start.undoes;
            if (undone != undone_by.end())
                object["undone_by"] = undone->second.number;
            if (run.is_open || run.was_cut_off)
                object["state"] = run.was_cut_off ? "cut off" : "open";
            if (run.is_damaged)
                object["damaged"] = true;
            print_json(object);
            continue;
        }
        std::string line = std::to_string(run.number) + "  " + local_time(run.start.time) + "  "
                           + (!run.is_open      ? files_text(run.files)
                              : run.was_cut_off ? "files out of reach"
                                                : "under way")
                           + "  " + core::printable(run.start.activity);
        if (run.was_cut_off)
            line += "  (cut off)";
        if (run.is_damaged)
            line += "  (its journal is damaged)";
        if (undone != undone_by.end())
            line += (undone->second.files < run.files ? "  (partly undone by " : "  (undone by ")
                    + std::to_string(undone->second.number) + ")";
        print_line(line);
    }
    return core::exit_status::done;
}

int files_of_run(Session& session, std::uint64_t number, bool json) {
    const core::OpenFile journal = session.host.runs().open(number);
    const core::MadeChanges made = core::made_changes(journal);
    bool all_known = true;
    const auto print = [&](const std::string& path) {
        if (path.empty())
            all_known = false;
        else if (json)
            print_json(Json{{"path", path}});
        else
            print_line(core::printable(path));
    };
    for (const core::MadeChange& change : made.changes)
        print(path_of(journal, change.position));
    for (const std::string& path : made.damaged)
        print(path);
    if (all_known && made.damaged.empty())
        return core::exit_status::done;
    session.terminal.line("The journal of run " + std::to_string(number)
                          + " is damaged; files may be missing here.");
    return core::exit_status::some_failed;
}

} // namespace quorvex::command
