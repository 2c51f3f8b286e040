// Writes the files of one run: a journal is begun with the first of them, changes are collected to batches,
// each batch is noted and flushed before its files are touched.
//
//     RunWriter writer(store, {now, "run tidy.qvx", 0});
//     writer.submit(writer.prepare(std::move(file), edit, options), [](const WrittenFile& file) { ... });
//     ...
//     writer.finish();
//
// prepare and submit: any thread, several at a time. The others: one thread, while nobody else calls
// anything.
#pragma once

#include "vantaro/journal/recovery.h"
#include "vantaro/safe_write/prepare.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vantaro::core {

/// What became of a submitted change.
struct WrittenFile {
    /// Why the file has its old bytes still; empty when it has its new ones.
    std::string error;
    /// What the new file is like.
    FileIdentity identity;
};

class RunWriter {
public:
    /// Called once for each change that was submitted, on a thread of the writer's own, in the order of
    /// submission. Throws nothing.
    using Done = std::function<void(const WrittenFile&)>;

    /// `store` outlives this. `report` takes, on any thread, what there is to say of runs that were cut off
    /// while this one was under way.
    RunWriter(
        RunStore& store, RunStart start, RecoveryReport report = [](const std::string&) {});
    /// As finish(), but failures go unheard.
    ~RunWriter();
    RunWriter(const RunWriter&) = delete;
    RunWriter& operator=(const RunWriter&) = delete;

    /// prepare_change, with names for temporary files. Where the disk is full, waits until what was submitted
    /// has given its room back.
    PreparedChange prepare(OpenFile file, const FileEdit& edit, const ChangeOptions& options);
    /// Hands a change in. Waits while too much memory is waiting.
    void submit(PreparedChange change, Done done);
    /// Why the run has no journal, so that every change fails with this text and no file is touched; empty
    /// when nothing of the kind has happened. Any thread.
    std::string why_not_begun();
    /// Waits until everything submitted is done.
    void wait();
    /// Waits, flushes everything that was written, and ends the journal. Returns the number of the run, or 0
    /// when no file was changed: there is no journal then.
    /// Throws vantaro_io::exception_io when the files could not be flushed or the journal not be ended: the
    /// next start looks after this run then.
    std::uint64_t finish();

private:
    struct Waiting {
        PreparedChange prepared;
        Done done;
        std::uint64_t number = 0;
        WrittenFile outcome;

        /// Without it, the file is nobody's any more.
        void fail(const char* why);
        bool has_failed() const { return !outcome.error.empty(); }
    };

    OpenRun& journal();
    void wait_for_room();
    TemporaryNames names();
    std::string temporary_name(const std::string& folder);
    void announce_temporary(const std::string& path);
    void commit_batches();
    void commit(std::vector<Waiting>& batch);
    void give_way(std::vector<Waiting>& batch);
    void note(std::vector<Waiting>& batch);
    void carry_out(Waiting& item);
    void carry_out_without_shift(Waiting& item);
    void remember_file_system(const OpenFile& file);
    void flush_file_systems();

    RunStore& store_;
    const RunStart start_;
    const RecoveryReport report_;
    const std::string temporary_prefix_;

    std::mutex journal_mutex_; // guards what follows
    std::optional<OpenRun> journal_;
    std::string why_not_begun_;
    std::uint64_t next_temporary_ = 0;

    std::mutex room_mutex_; // held by whoever waits for room on the disk

    std::mutex queue_mutex_; // guards what follows
    std::condition_variable queue_changed_;
    std::vector<Waiting> queue_;
    std::size_t queued_bytes_ = 0;
    std::size_t unsubmitted_ = 0; // prepared, and not handed in yet, or never
    bool is_committing_ = false;
    bool is_ending_ = false;
    bool is_hurried_ = false; // somebody waits for what is in the queue

    // Touched by the committing thread, and by finish() when it has ended.
    std::uint64_t next_number_ = 0;
    std::uint64_t written_ = 0;
    bool needs_recovery_ = false;
    /// A folder of each file system that was written to, by device.
    std::map<dev_t, OpenFile> file_systems_;
    /// Of runs that were cut off, by number.
    std::map<std::uint64_t, HalfWrittenFiles> half_written_;
    /// They stay locked until others can take over the journal.
    std::vector<PreparedChange> left_between_;

    std::thread thread_; // last: it uses the others
};

} // namespace vantaro::core
