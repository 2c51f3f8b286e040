#include "vantaro/journal/undo.h"

#include "host/api/exceptions.h"
#include "vantaro/journal/run_writer.h"
#include "vantaro/journal/shrink.h"
#include "vantaro/safe_write/settle.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace vantaro::core {

namespace {

using Inode = std::pair<std::uint64_t, std::uint64_t>;

Inode inode_of(const FileIdentity& identity) {
    return {identity.device, identity.inode};
}

/// Which later runs have changed a file and were not taken back.
class LaterRuns {
public:
    LaterRuns(const RunStore& store, std::uint64_t number) : store_(store), number_(number) {}

    /// The oldest of them; 0 for none.
    std::uint64_t first_to_change(const std::string& path) {
        if (!first_by_path_)
            learn();
        const auto found = first_by_path_->find(path);
        return found != first_by_path_->end() ? found->second : 0;
    }

private:
    void learn() {
        first_by_path_.emplace();
        std::set<std::uint64_t> undone;
        for (const RunSummary& run : store_.runs()) { // the newest first
            if (run.number <= number_ || run.is_open || undone.contains(run.number))
                continue;
            if (run.start.undoes != 0) {
                undone.insert(run.start.undoes);
                continue;
            }
            try {
                const OpenFile journal = store_.open(run.number);
                for (const MadeChange& made : made_changes(journal).changes)
                    (*first_by_path_)[read_change(journal, made.position).change.path] = run.number;
            } catch (const std::exception&) {
                // Only the reason is less exact then.
            }
        }
    }

    const RunStore& store_;
    const std::uint64_t number_;
    std::optional<std::map<std::string, std::uint64_t>> first_by_path_;
};

class Undo {
public:
    Undo(RunStore& store, std::uint64_t number, const UndoOptions& options, UndoObserver& observer,
         const AbortFlag& abort)
        : store_(store), options_(options), observer_(observer), abort_(abort), journal_(store.open(number)),
          made_(made_changes(journal_)), later_(store, number),
          writer_(store, start(number), options.report) {
        report_.total = std::max(made_.changes.size() + made_.damaged.size(), noted_total());
    }

    UndoReport run() {
        // The last change of a file first.
        for (auto made = made_.changes.rbegin(); made != made_.changes.rend(); ++made) {
            if (abort_.is_aborting())
                break;
            std::string path = journal_.path();
            try {
                StoredChange stored = read_change(journal_, made->position);
                path = stored.change.path;
                take_back(stored, made->is_certain);
            } catch (const std::exception& error) {
                if (path == journal_.path())
                    if (std::string named = damaged_path(made->position); !named.empty())
                        path = std::move(named);
                tell(path, error.what());
            }
        }
        writer_.wait();
        if (!abort_.is_aborting())
            tell_what_is_damaged();
        try {
            report_.run = writer_.finish();
        } catch (const std::exception& error) {
            report_.problem = error.what();
        }
        report_.aborted = abort_.is_aborting() && done_ < report_.total;
        return report_;
    }

private:
    RunStart start(std::uint64_t number) const {
        JournalReader reader(journal_);
        const std::string bytes = reader.next().value_or("");
        const auto undone = begins<RunStart>(bytes) ? std::get<RunStart>(decode(bytes)) : RunStart();
        return {options_.now, "undo " + std::to_string(number) + " (" + undone.activity + ")", number};
    }

    /// How many changes the run says that it has made; 0 where it does not.
    std::size_t noted_total() const {
        const std::string bytes = JournalReader(journal_).last(encode(RunEnd()).size()).value_or("");
        return begins<RunEnd>(bytes) ? std::get<RunEnd>(decode(bytes)).files : 0;
    }

    std::string damaged_path(std::uint64_t position) const {
        constexpr std::size_t enough = 8192;
        return path_in(JournalReader(journal_).head_at(position, enough));
    }

    /// Every file of the run is named, or counted at least.
    void tell_what_is_damaged() {
        static constexpr const char* reason = "What the run's journal has of the file is damaged";
        for (const std::string& path : made_.damaged)
            tell(path.empty() ? journal_.path() : path, reason);
        for (std::size_t told = made_.changes.size() + made_.damaged.size(); told < report_.total; ++told)
            tell(journal_.path(), reason);
    }

    void take_back(StoredChange& stored, bool is_certain) {
        const FileChange& change = stored.change;
        if (!is_certain && !settled(change))
            return;
        OpenFile file = open(change.path);
        const FileStatus seen = FileStatus::of(file.status());
        // The bytes decide: times can be the same and files not, or the other way round.
        if (!holds_new_bytes(file, change) || !holds_kept_parts(file, change, true)) {
            if (!holds_old_bytes(file, change) || !holds_kept_parts(file, change, false))
                refuse(change.path);
            tell(change.path, {}); // put back by an undo that did not come to its end
            return;
        }
        restore_old_bytes(stored, file);
        ChangeOptions options;
        options.seen = seen;
        if (options_.times)
            options.modified = change.before.modified;
        in_work_.insert(inode_of(seen.identity));
        PreparedChange prepared = writer_.prepare(std::move(file), inverse_of(change), options);
        writer_.submit(std::move(prepared),
                       [this, path = change.path](const WrittenFile& written) { tell(path, written.error); });
    }

    /// Opens the file, when what this undo does to it under another name is done.
    OpenFile open(const std::string& path) {
        if (in_work_.contains(inode_of(FileIdentity::of(path)))) {
            writer_.wait();
            in_work_.clear();
        }
        return OpenFile::open_for_change(store_.calls(), path);
    }

    /// Puts a file right that the run may have left half-written. Returns whether its change took place.
    bool settled(const FileChange& change) {
        writer_.wait();
        switch (settle(store_.calls(), change, Wait::a_moment)) {
        case FileState::as_changed:
            return true;
        case FileState::as_before:
            tell(change.path, {});
            return false;
        default:
            throw vantaro_io::exception_io(
                "The run was cut off while it wrote the file, and another program has changed the file "
                "since; it was left alone");
        }
    }

    [[noreturn]] void refuse(const std::string& path) {
        if (const std::uint64_t later = later_.first_to_change(path); later != 0)
            throw vantaro_io::exception_io("Run " + std::to_string(later)
                                           + " has changed the file since; it was left alone");
        throw vantaro_io::exception_io("The file has changed since; it was left alone");
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
    const MadeChanges made_;
    LaterRuns later_;
    std::set<Inode> in_work_;

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
    recover_runs(store, options.report, number);
    return Undo(store, number, options, observer, abort).run();
}

} // namespace vantaro::core
