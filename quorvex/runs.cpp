#include "quorvex/output.h"
#include "quorvex/verbs.h"

#include "vantaro/application/exit_status.h"
#include "vantaro/terminal/terminal.h"

#include <array>
#include <ctime>
#include <map>

namespace quorvex::command {

using namespace vantaro;

namespace {

std::string local_time(std::int64_t nanoseconds) {
    constexpr std::int64_t second = 1'000'000'000;
    const std::time_t time = nanoseconds / second;
    std::tm parts{};
    ::localtime_r(&time, &parts);
    std::array<char, 32> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

std::string files_text(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " file" : " files");
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

} // namespace quorvex::command
