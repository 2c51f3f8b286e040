#include "vantaro/journal/recovery.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"
#include "vantaro/safe_write/settle.h"

#include <fcntl.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

namespace vantaro::core {

namespace {

class Recovery {
public:
    Recovery(RunStore& store, OpenRun run, const RecoveryReport& report, bool is_given_up)
        : store_(store), run_(std::move(run)), name_("Run " + std::to_string(run_.number)), report_(report),
          is_given_up_(is_given_up) {}

    void run() {
        read();
        if (has_ended_) { // only its name is that of an open one
            store_.close(std::move(run_));
            return;
        }
        for (const auto& [number, position] : last_changes_)
            settle_change(number, position);
        for (const std::string& path : temporary_names_)
            if (!remove_temporary(store_.calls(), path))
                report_(name_ + ": " + path + " is a temporary file that could not be removed");
        end();
    }

private:
    /// Keeps the places of the changes, not the changes: they can be many, and large.
    void read() {
        JournalReader reader(run_.journal.file());
        std::set<std::string> of_changes;
        while (const std::optional<std::string> bytes = reader.next()) {
            try {
                const Record record = decode(*bytes);
                if (const auto* name = std::get_if<TemporaryName>(&record)) {
                    temporary_names_.insert(name->path);
                } else if (const auto* noted = std::get_if<NotedChange>(&record)) {
                    note(noted->number, reader.start(), noted->change);
                    of_changes.insert(noted->change.temporary);
                } else if (const auto* outcome = std::get_if<ChangeOutcome>(&record)) {
                    outcomes_[outcome->number] = *outcome;
                } else if (std::holds_alternative<RunEnd>(record)) {
                    has_ended_ = true;
                }
            } catch (const std::exception&) {
                report_if_damaged_change(*bytes);
            }
        }
        constexpr std::size_t enough = 8192;
        for (const std::uint64_t position : reader.damaged())
            report_if_damaged_change(reader.head_at(position, enough));
        // Those of changes are looked after with their files.
        for (const std::string& name : of_changes)
            temporary_names_.erase(name);
    }

    void report_if_damaged_change(const std::string& bytes) {
        if (!begins<NotedChange>(bytes))
            return; // what became of a change can be told from its file as well
        const std::string path = path_in(bytes);
        report_(name_ + " was cut off, and its journal is damaged: what became of "
                + (path.empty() ? "one of its files" : path) + " cannot be told");
        ++damaged_;
    }

    /// Of several changes of a file, those before the last one were finished when it began. Two names of a
    /// file are known by its inode, which stays unless the file is replaced.
    void note(std::uint64_t number, std::uint64_t position, const FileChange& change) {
        const std::pair inode(change.before.device, change.before.inode);
        noted_.insert(number);
        if (const auto earlier = by_path_.find(change.path); earlier != by_path_.end())
            last_changes_.erase(earlier->second);
        if (const auto earlier = by_inode_.find(inode); earlier != by_inode_.end())
            last_changes_.erase(earlier->second);
        last_changes_[number] = position;
        by_path_[change.path] = number;
        if (change.method != WriteMethod::replace)
            by_inode_[inode] = number;
    }

    void settle_change(std::uint64_t number, std::uint64_t position) {
        const auto known = outcomes_.find(number);
        if (known != outcomes_.end() && known->second.is_settled)
            return;
        JournalReader reader(run_.journal.file());
        reader.seek(position);
        const Record record = decode(reader.next().value());
        const FileChange& change = std::get<NotedChange>(record).change;
        ChangeOutcome outcome{number, FileState::foreign, {}, true};
        bool is_reachable = true;
        try {
            outcome.state = settle(store_.calls(), change, Wait::no);
            if (outcome.state != FileState::foreign)
                remember_file_system(change.path);
            if (outcome.state == FileState::as_changed)
                outcome.after = FileIdentity::of(change.path);
        } catch (const std::exception& error) {
            if (unreachable_++ == 0)
                first_unreachable_ = change.path + ": " + error.what();
            if (!is_given_up_)
                return;
            is_reachable = false;
        }
        const bool was_done = known != outcomes_.end() && known->second.state == FileState::as_changed;
        if (outcome.state == FileState::foreign && was_done && !is_lost(change))
            outcome = {number, FileState::as_changed, known->second.after, true}; // changed since
        else if (outcome.state == FileState::foreign && is_reachable)
            report_(name_ + " was cut off while it wrote " + change.path
                    + ", which was changed by another program, or removed, since, and was left alone; "
                      "\"quorvex undo "
                    + std::to_string(run_.number) + "\" looks at it again");
        else if (outcome.state == FileState::as_before && (was_done || known == outcomes_.end()))
            ++put_back_;
        outcomes_[number] = outcome;
        new_outcomes_.push_back(encode(outcome));
    }

    /// A file that has nothing in it any more, or is gone, has not the new bytes that it got.
    static bool is_lost(const FileChange& change) {
        try {
            return change.new_size > 0 && FileIdentity::of(change.path).size == 0;
        } catch (const vantaro_io::exception_io&) {
            return false; // removed or renamed, as files are
        }
    }

    void remember_file_system(const std::string& path) {
        const std::string folder = std::filesystem::path(path).parent_path();
        const std::uint64_t device = FileIdentity::of(folder).device;
        if (!file_systems_.contains(device))
            file_systems_.emplace(device, open_within(store_.calls(), path));
    }

    void end() {
        // What was put right is on the medium before the journal says so.
        for (const auto& [device, folder] : file_systems_)
            if (store_.calls().sync_file_system(folder.descriptor()) != 0)
                throw_system_error(errno);
        if (!new_outcomes_.empty())
            run_.journal.append(new_outcomes_);
        if (unreachable_ > 0)
            report_unreachable();
        if (unreachable_ > 0 && !is_given_up_)
            return;
        std::uint64_t made = 0;
        std::uint64_t unknown = damaged_;
        for (const auto& [number, outcome] : outcomes_) {
            if (!noted_.contains(number))
                continue;
            made += outcome.state == FileState::as_changed ? 1 : 0;
            unknown += outcome.state == FileState::foreign || outcome.state == FileState::between ? 1 : 0;
        }
        if (made + put_back_ > 0)
            report_(name_ + " was cut off: " + std::to_string(made)
                    + (made == 1 ? " file has its new tags, " : " files have their new tags, ")
                    + std::to_string(put_back_) + (put_back_ == 1 ? " its old ones." : " their old ones."));
        if (made + unknown == 0)
            store_.discard(std::move(run_));
        else
            store_.end(std::move(run_), {made + unknown, true});
    }

    void report_unreachable() {
        const std::string number = std::to_string(run_.number);
        report_(name_ + " was cut off, and "
                + (unreachable_ == 1 ? "a file of it" : std::to_string(unreachable_) + " files of it")
                + " cannot be looked at now (" + first_unreachable_ + "); "
                + (is_given_up_
                       ? "\"quorvex undo " + number + "\" can try again later"
                       : "the next start tries again, \"quorvex undo " + number + "\" does without"));
    }

    RunStore& store_;
    OpenRun run_;
    const std::string name_;
    const RecoveryReport& report_;
    const bool is_given_up_;
    std::set<std::string> temporary_names_;
    std::set<std::uint64_t> noted_;
    std::map<std::uint64_t, std::uint64_t> last_changes_; // number and position
    std::map<std::string, std::uint64_t> by_path_;
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::uint64_t> by_inode_;
    std::map<std::uint64_t, ChangeOutcome> outcomes_;
    std::vector<std::string> new_outcomes_;
    std::map<std::uint64_t, OpenFile> file_systems_; // a folder of each, by device
    std::uint64_t put_back_ = 0;
    std::uint64_t damaged_ = 0;
    std::uint64_t unreachable_ = 0;
    std::string first_unreachable_;
    bool has_ended_ = false;
};

} // namespace

void recover_runs(RunStore& store, const RecoveryReport& report, std::uint64_t given_up) {
    try {
        store.remove_leftovers();
        AbandonedRuns abandoned = store.take_over_abandoned(report);
        for (OpenRun& run : abandoned.runs) {
            const std::string path = run.journal.path();
            const bool is_given_up = run.number == given_up;
            try {
                Recovery(store, std::move(run), report, is_given_up).run();
            } catch (const std::exception& error) {
                report(path
                       + ": this run was cut off, and its files could not be looked after: " + error.what());
            }
        }
    } catch (const std::exception& error) {
        report(error.what());
    }
}

namespace {

HalfWrittenFiles half_written_files(const OpenRun& run) {
    std::map<std::uint64_t, FileChange> unfinished;
    JournalReader reader(run.journal.file());
    while (const std::optional<std::string> bytes = reader.next()) {
        try {
            Record record = decode(*bytes);
            if (auto* noted = std::get_if<NotedChange>(&record)) {
                noted->change.ranges.clear(); // they can be large
                unfinished[noted->number] = std::move(noted->change);
            } else if (const auto* outcome = std::get_if<ChangeOutcome>(&record)) {
                unfinished.erase(outcome->number);
            }
        } catch (const std::exception&) {
            // Whoever puts the run right says that.
        }
    }
    HalfWrittenFiles result;
    for (const auto& [number, change] : unfinished) {
        result.paths.insert(change.path);
        result.inodes.emplace(change.before.device, change.before.inode);
    }
    return result;
}

} // namespace

bool HalfWrittenFiles::contains(const FileChange& change) const {
    return paths.contains(change.path) || inodes.contains({change.before.device, change.before.inode});
}

bool find_half_written(RunStore& store, std::map<std::uint64_t, HalfWrittenFiles>& by_run) {
    const auto is_known = [&](std::uint64_t number) { return by_run.contains(number); };
    const AbandonedRuns abandoned = store.take_over_abandoned([](const std::string&) {}, is_known);
    for (const OpenRun& run : abandoned.runs)
        by_run.emplace(run.number, half_written_files(run));
    return !abandoned.runs.empty();
}

} // namespace vantaro::core
