#include "vantaro/journal/undo.h"

#include "host/api/exceptions.h"
#include "vantaro/journal/run_writer.h"
#include "vantaro/journal/shrink.h"

#include <algorithm>
#include <compare>
#include <map>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

namespace vantaro::core {

namespace {

/// A state of a file, which is found by its path (device and inode may not survive a remount) and by its
/// inode (several names may lead there).
struct State {
    std::uint64_t size = 0;
    std::int64_t modified = 0;

    explicit State(const FileIdentity& identity) : size(identity.size), modified(identity.modified) {}
    friend auto operator<=>(const State&, const State&) = default;
};

using Inode = std::pair<std::uint64_t, std::uint64_t>;

Inode inode_of(const FileIdentity& identity) {
    return {identity.device, identity.inode};
}

/// By the state that a file has after something was taken back: the state with the same bytes before.
class EarlierStates {
public:
    void add(const std::string& path, const FileIdentity& now, const FileIdentity& earlier) {
        by_path_.insert_or_assign({path, State(now)}, State(earlier));
        by_inode_.insert_or_assign({inode_of(now), State(now)}, State(earlier));
    }
    /// All states with the bytes that the file has now, the present one first.
    std::vector<State> of(const std::string& path, const FileIdentity& now) const {
        std::vector<State> states{State(now)};
        // Two states could lead to each other only in a damaged journal.
        while (states.size() <= by_path_.size()) {
            if (const auto found = by_path_.find({path, states.back()}); found != by_path_.end())
                states.push_back(found->second);
            else if (const auto same_file = by_inode_.find({inode_of(now), states.back()});
                     same_file != by_inode_.end())
                states.push_back(same_file->second);
            else
                break;
        }
        return states;
    }

private:
    std::map<std::pair<std::string, State>, State> by_path_;
    std::map<std::pair<Inode, State>, State> by_inode_;
};

class Undo {
public:
    Undo(RunStore& store, std::uint64_t number, const UndoOptions& options, UndoObserver& observer,
         const AbortFlag& abort)
        : store_(store), options_(options), observer_(observer), abort_(abort), journal_(store.open(number)),
          changes_(made_changes(journal_)), writer_(store, start(number)) {
        report_.total = changes_.size();
        learn_undone_states(number);
    }

    UndoReport run() {
        // The last change of a file first.
        for (auto made = changes_.rbegin(); made != changes_.rend(); ++made) {
            if (abort_.is_aborting())
                break;
            StoredChange stored = read_change(journal_, made->position);
            try {
                put_back(stored, made->after);
            } catch (const vantaro_io::exception_io& error) {
                tell(stored.change.path, error.what());
            }
        }
        writer_.wait();
        try {
            report_.run = writer_.finish();
        } catch (const vantaro_io::exception_io& error) {
            report_.problem = error.what();
        }
        report_.aborted = abort_.is_aborting() && done_ < report_.total;
        return report_;
    }

private:
    RunStart start(std::uint64_t number) const {
        JournalReader reader(journal_);
        const std::optional<std::string> bytes = reader.next();
        const auto undone = bytes ? std::get<RunStart>(decode(*bytes)) : RunStart();
        return {options_.now, "undo " + std::to_string(number) + " (" + undone.activity + ")", number};
    }

    /// Later runs that took something back: a file that one of them wrote has the bytes of an earlier state.
    void learn_undone_states(std::uint64_t number) {
        for (const RunSummary& run : store_.runs()) {
            if (run.number <= number || run.start.undoes == 0 || run.is_open)
                continue;
            try {
                learn_states_after(store_.open(run.number));
            } catch (const vantaro_io::exception_io&) {
                // Its files then count as changed, which is the careful answer.
            }
        }
    }

    void learn_states_after(const OpenFile& journal) {
        for (const MadeChange& made : made_changes(journal)) {
            const FileChange change = read_change(journal, made.position).change;
            if (change.restores)
                earlier_states_.add(change.path, made.after, *change.restores);
        }
    }

    void put_back(StoredChange& stored, const FileIdentity& after) {
        const FileChange& change = stored.change;
        OpenFile file = OpenFile::open_for_change(store_.calls(), change.path);
        if (in_work_.contains(inode_of(file.identity()))) {
            writer_.wait();
            in_work_.clear();
            file = OpenFile::open_for_change(store_.calls(), change.path);
        }
        const std::vector<State> states = states_of(change.path, file.identity());
        const auto is_one = [&](const FileIdentity& identity) {
            return std::ranges::find(states, State(identity)) != states.end();
        };
        // The bytes decide: where files keep their times, the states before and after can look the same.
        if (!is_one(after) || !holds_new_bytes(file, change)) {
            if (!is_one(change.before))
                throw vantaro_io::exception_io("The file has changed since; it was left alone");
            tell(change.path, {}); // put back by an undo that did not come to its end
            return;
        }
        restore_old_bytes(stored, file);
        ChangeOptions options;
        options.restores = change.before;
        if (options_.times)
            options.modified = change.before.modified;
        in_work_.insert(inode_of(file.identity()));
        PreparedChange prepared = writer_.prepare(std::move(file), inverse_of(change), options);
        writer_.submit(std::move(prepared),
                       [this, path = change.path, before = change.before](const WrittenFile& written) {
                           if (written.error.empty()) {
                               const std::lock_guard lock(mutex_);
                               earlier_states_.add(path, written.identity, before);
                           }
                           tell(path, written.error);
                       });
    }

    std::vector<State> states_of(const std::string& path, const FileIdentity& now) {
        const std::lock_guard lock(mutex_);
        return earlier_states_.of(path, now);
    }

    void tell(const std::string& path, const std::string& error) {
        const std::lock_guard lock(telling_);
        ++(error.empty() ? report_.put_back : report_.failed);
        observer_.on_file(path, error, ++done_, report_.total);
    }

    RunStore& store_;
    const UndoOptions options_;
    UndoObserver& observer_;
    const AbortFlag& abort_;
    const OpenFile journal_;
    const std::vector<MadeChange> changes_;
    std::set<Inode> in_work_;

    std::mutex mutex_; // guards earlier_states_
    EarlierStates earlier_states_;

    std::mutex telling_; // guards the report, and the observer
    UndoReport report_;
    std::size_t done_ = 0;

    RunWriter writer_; // last: its thread uses the others
};

} // namespace

std::optional<RunSummary> newest_run_to_undo(const std::vector<RunSummary>& runs) {
    std::set<std::uint64_t> undone;
    for (const RunSummary& run : runs) {
        if (run.is_open || undone.contains(run.number))
            continue; // an undo that was taken back has undone nothing
        if (run.start.undoes == 0)
            return run;
        undone.insert(run.start.undoes);
    }
    return std::nullopt;
}

UndoReport undo_run(RunStore& store, std::uint64_t number, const UndoOptions& options, UndoObserver& observer,
                    const AbortFlag& abort) {
    return Undo(store, number, options, observer, abort).run();
}

} // namespace vantaro::core
