#include "vantaro/journal/undo.h"

#include "host/api/exceptions.h"
#include "vantaro/journal/run_writer.h"
#include "vantaro/journal/shrink.h"

#include <map>
#include <mutex>
#include <set>
#include <tuple>
#include <utility>

namespace vantaro::core {

namespace {

/// A state of a file by what survives a remount: device and inode may not.
using StateKey = std::tuple<std::string, std::uint64_t, std::int64_t>;

StateKey key_of(const std::string& path, const FileIdentity& identity) {
    return {path, identity.size, identity.modified};
}

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
                earlier_states_[key_of(change.path, made.after)] = *change.restores;
        }
    }

    void put_back(StoredChange& stored, const FileIdentity& after) {
        const FileChange& change = stored.change;
        if (in_work_.contains(change.path)) {
            writer_.wait();
            in_work_.clear();
        }
        OpenFile file = OpenFile::open_for_change(store_.calls(), change.path);
        if (!is_as_left(file, change, after))
            throw vantaro_io::exception_io("The file has changed since; it was left alone");
        restore_old_bytes(stored, file);
        ChangeOptions options;
        options.restores = change.before;
        if (options_.times)
            options.modified = change.before.modified;
        PreparedChange prepared = writer_.prepare(std::move(file), inverse_of(change), options);
        in_work_.insert(change.path);
        writer_.submit(std::move(prepared),
                       [this, path = change.path, before = change.before](const WrittenFile& written) {
                           if (written.error.empty()) {
                               const std::lock_guard lock(mutex_);
                               earlier_states_[key_of(path, written.identity)] = before;
                           }
                           tell(path, written.error);
                       });
    }

    bool is_as_left(const OpenFile& file, const FileChange& change, const FileIdentity& after) {
        StateKey state = key_of(change.path, file.identity());
        {
            const std::lock_guard lock(mutex_);
            // Two states could lead to each other only in a damaged journal.
            for (std::size_t steps = earlier_states_.size(); steps > 0; --steps) {
                const auto earlier = earlier_states_.find(state);
                if (state == key_of(change.path, after) || earlier == earlier_states_.end())
                    break;
                state = key_of(change.path, earlier->second);
            }
        }
        return state == key_of(change.path, after) && holds_new_bytes(file, change);
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
    std::set<std::string> in_work_;

    std::mutex mutex_; // guards earlier_states_
    /// By the state that a file has after something was taken back: the state with the same bytes before.
    std::map<StateKey, FileIdentity> earlier_states_;

    std::mutex telling_; // guards the report, and the observer
    UndoReport report_;
    std::size_t done_ = 0;

    RunWriter writer_; // last: its thread uses the others
};

} // namespace

UndoReport undo_run(RunStore& store, std::uint64_t number, const UndoOptions& options, UndoObserver& observer,
                    const AbortFlag& abort) {
    return Undo(store, number, options, observer, abort).run();
}

} // namespace vantaro::core
