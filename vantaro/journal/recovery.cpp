#include "vantaro/journal/recovery.h"

#include "host/api/exceptions.h"

#include <fcntl.h>

#include <cerrno>
#include <map>
#include <set>
#include <utility>

namespace vantaro::core {

namespace {

using Report = std::function<void(const std::string& line)>;

class Recovery {
public:
    Recovery(RunStore& store, OpenRun run, const Report& report)
        : store_(store), run_(std::move(run)), name_("Run " + std::to_string(run_.number)), report_(report) {}

    void run() {
        read();
        if (has_ended_) { // only its name is that of an open one
            store_.close(std::move(run_));
            return;
        }
        for (const std::string& path : temporary_names_)
            remove(path);
        for (const auto& [number, position] : last_changes_)
            settle_change(number, position);
        end();
    }

private:
    /// Keeps the places of the changes, not the changes: they can be many, and large.
    void read() {
        JournalReader reader(run_.journal.file());
        for (std::uint64_t position = reader.position(); std::optional<std::string> bytes = reader.next();
             position = reader.position()) {
            Record record = decode(*bytes);
            if (const auto* name = std::get_if<TemporaryName>(&record))
                temporary_names_.push_back(name->path);
            else if (const auto* noted = std::get_if<NotedChange>(&record))
                note(noted->number, position, noted->change);
            else if (const auto* outcome = std::get_if<ChangeOutcome>(&record))
                outcomes_[outcome->number] = *outcome;
            else if (std::holds_alternative<RunEnd>(record))
                has_ended_ = true;
        }
    }

    /// Of several changes of a file, those before the last one were finished when it began. Two names of a
    /// file are known by its inode, which stays unless the file is replaced.
    void note(std::uint64_t number, std::uint64_t position, const FileChange& change) {
        const std::pair inode(change.before.device, change.before.inode);
        if (const auto earlier = by_path_.find(change.path); earlier != by_path_.end())
            last_changes_.erase(earlier->second);
        if (const auto earlier = by_inode_.find(inode); earlier != by_inode_.end())
            last_changes_.erase(earlier->second);
        last_changes_[number] = position;
        by_path_[change.path] = number;
        if (change.method != WriteMethod::replace)
            by_inode_[inode] = number;
    }

    void remove(const std::string& path) {
        if (store_.calls().unlink(path) != 0 && errno != ENOENT && errno != ENOTDIR)
            report_(name_ + ": " + path + " is a temporary file that could not be removed");
    }

    void settle_change(std::uint64_t number, std::uint64_t position) {
        const auto known = outcomes_.find(number);
        if (known != outcomes_.end() && known->second.is_settled)
            return;
        JournalReader reader(run_.journal.file());
        reader.seek(position);
        const FileChange change = std::get<NotedChange>(decode(reader.next().value())).change;
        ChangeOutcome outcome{number, FileState::foreign, {}, true};
        try {
            outcome.state = settle(store_.calls(), change);
            if (outcome.state == FileState::as_changed)
                outcome.after = FileIdentity::of(change.path);
        } catch (const vantaro_io::exception_io& error) {
            report_(name_ + " was cut off, and " + change.path + " cannot be looked at now: " + error.what()
                    + "; the next start tries again");
            is_unreachable_ = true;
            return;
        }
        const bool was_done = known != outcomes_.end() && known->second.state == FileState::as_changed;
        if (outcome.state == FileState::foreign && was_done)
            outcome = {number, FileState::as_changed, known->second.after, true}; // changed since
        else if (outcome.state == FileState::foreign)
            report_(name_ + ": " + change.path + " was changed by another program, and was left alone");
        else if (outcome.state == FileState::as_before && (was_done || known == outcomes_.end()))
            ++put_back_;
        outcomes_[number] = outcome;
        new_outcomes_.push_back(encode(outcome));
    }

    void end() {
        if (!new_outcomes_.empty())
            run_.journal.append(new_outcomes_);
        if (is_unreachable_)
            return;
        std::uint64_t files = 0;
        for (const auto& [number, outcome] : outcomes_)
            files += outcome.state == FileState::as_changed ? 1 : 0;
        if (files + put_back_ > 0)
            report_(name_ + " was cut off: " + std::to_string(files)
                    + (files == 1 ? " file has its new tags, " : " files have their new tags, ")
                    + std::to_string(put_back_) + (put_back_ == 1 ? " its old ones." : " their old ones."));
        if (files == 0)
            store_.discard(std::move(run_));
        else
            store_.end(std::move(run_), {files, true});
    }

    RunStore& store_;
    OpenRun run_;
    const std::string name_;
    const Report& report_;
    std::vector<std::string> temporary_names_;
    std::map<std::uint64_t, std::uint64_t> last_changes_; // number and position
    std::map<std::string, std::uint64_t> by_path_;
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::uint64_t> by_inode_;
    std::map<std::uint64_t, ChangeOutcome> outcomes_;
    std::vector<std::string> new_outcomes_;
    std::uint64_t put_back_ = 0;
    bool is_unreachable_ = false;
    bool has_ended_ = false;
};

} // namespace

void recover_runs(RunStore& store, const Report& report) {
    try {
        for (OpenRun& run : store.take_over_abandoned(report)) {
            const std::string path = run.journal.path();
            try {
                Recovery(store, std::move(run), report).run();
            } catch (const vantaro_io::exception_io& error) {
                report(path
                       + ": this run was cut off, and its files could not be looked after: " + error.what());
            }
        }
    } catch (const vantaro_io::exception_io& error) {
        report(error.what());
    }
}

} // namespace vantaro::core
