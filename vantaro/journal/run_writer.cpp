#include "vantaro/journal/run_writer.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <random>
#include <utility>

namespace vantaro::core {

namespace {

/// What may wait to be committed, in bytes of memory.
constexpr std::size_t most_waiting = 64 << 20;
/// Each of them keeps up to two files open.
constexpr std::size_t most_files_waiting = 128;
/// What makes a batch worth a flush at once; fewer wait a moment for others to come.
constexpr std::size_t full_batch = 64;
constexpr std::chrono::milliseconds moment(5);

std::string random_prefix() {
    std::random_device device;
    return temporary_prefix + std::to_string(device()) + '-';
}

} // namespace

void RunWriter::Waiting::fail(const char* why) {
    outcome.error = why;
    prepared.replacement.reset();
    prepared.file.close();
}

RunWriter::RunWriter(RunStore& store, RunStart start, RecoveryReport report)
    : store_(store), start_(std::move(start)), report_(std::move(report)), temporary_prefix_(random_prefix()),
      thread_([this] { commit_batches(); }) {}

RunWriter::~RunWriter() {
    try {
        finish();
    } catch (const std::exception&) {
        // The journal tells the next start.
    }
}

OpenRun& RunWriter::journal() {
    if (journal_)
        return *journal_;
    if (!why_not_begun_.empty())
        throw vantaro_io::exception_io(why_not_begun_);
    try {
        journal_.emplace(store_.begin(start_));
    } catch (const std::exception& error) {
        why_not_begun_ = error.what();
        throw;
    }
    return *journal_;
}

std::string RunWriter::why_not_begun() {
    const std::lock_guard lock(journal_mutex_);
    return why_not_begun_;
}

std::string RunWriter::temporary_name(const std::string& folder) {
    const std::lock_guard lock(journal_mutex_);
    return folder + (folder.ends_with('/') ? "" : "/") + temporary_prefix_
           + std::to_string(next_temporary_++);
}

void RunWriter::announce_temporary(const std::string& path) {
    const std::lock_guard lock(journal_mutex_);
    const std::string record = encode(TemporaryName{path});
    journal().journal.append({&record, 1});
    journal().journal.flush();
}

TemporaryNames RunWriter::names() {
    return {[this](const std::string& folder) { return temporary_name(folder); },
            [this](const std::string& path) { announce_temporary(path); }};
}

PreparedChange RunWriter::prepare(OpenFile file, const FileEdit& edit, const ChangeOptions& options) {
    const auto try_it = [&] {
        PreparedChange prepared = prepare_change(std::move(file), edit, options, names());
        const std::lock_guard lock(queue_mutex_);
        ++unsubmitted_;
        return prepared;
    };
    try {
        return try_it();
    } catch (const NoSpaceLeft&) {
        // New files that wait for their turn take room, and old ones until they are replaced.
    }
    const std::lock_guard one_by_one(room_mutex_);
    wait_for_room();
    return try_it();
}

void RunWriter::wait_for_room() {
    constexpr std::chrono::seconds patience(2); // what is never handed in is not waited for
    {
        std::unique_lock lock(queue_mutex_);
        queue_changed_.wait_for(lock, patience, [&] { return unsubmitted_ == 0; });
    }
    wait();
}

void RunWriter::submit(PreparedChange change, Done done) {
    const std::size_t bytes = change.memory();
    std::unique_lock lock(queue_mutex_);
    queue_changed_.wait(lock, [&] {
        return queue_.empty()
               || (queue_.size() < most_files_waiting && queued_bytes_ + bytes <= most_waiting);
    });
    queued_bytes_ += bytes;
    unsubmitted_ -= std::min<std::size_t>(unsubmitted_, 1);
    queue_.push_back({std::move(change), std::move(done), 0, {}});
    queue_changed_.notify_all();
}

void RunWriter::wait() {
    std::unique_lock lock(queue_mutex_);
    is_hurried_ = true;
    queue_changed_.notify_all();
    queue_changed_.wait(lock, [&] { return queue_.empty() && !is_committing_; });
    is_hurried_ = false;
}

void RunWriter::commit_batches() {
    while (true) {
        std::vector<Waiting> batch;
        {
            std::unique_lock lock(queue_mutex_);
            is_committing_ = false;
            queue_changed_.notify_all();
            queue_changed_.wait(lock, [&] { return is_ending_ || !queue_.empty(); });
            queue_changed_.wait_for(lock, moment, [&] {
                return is_ending_ || is_hurried_ || queue_.size() >= full_batch
                       || queued_bytes_ >= most_waiting / 2;
            });
            if (queue_.empty())
                return;
            batch = std::exchange(queue_, {});
            queued_bytes_ = 0;
            is_committing_ = true;
            queue_changed_.notify_all();
        }
        try {
            commit(batch);
        } catch (const std::exception& error) {
            // Whatever has become of the files, their journal says what they were.
            needs_recovery_ = true;
            for (Waiting& item : batch)
                if (!item.has_failed() && item.outcome.identity == FileIdentity())
                    item.outcome.error = error.what();
        }
        for (Waiting& item : batch)
            item.done(item.outcome);
    }
}

void RunWriter::commit(std::vector<Waiting>& batch) {
    for (Waiting& item : batch) {
        try {
            if (item.prepared.replacement)
                item.prepared.replacement->file().sync();
        } catch (const std::exception& error) {
            item.fail(error.what());
        }
    }
    give_way(batch);
    note(batch);
    std::vector<std::string> outcomes;
    bool is_flush_due = false;
    for (Waiting& item : batch) {
        if (item.has_failed())
            continue;
        const std::uint64_t number = item.number;
        bool is_left_between = false;
        try {
            is_flush_due |= item.prepared.replacement
                            && store_.calls().file_system(item.prepared.file.descriptor()).without_order;
            carry_out(item);
            ++written_;
        } catch (const LeftBetween& error) {
            item.outcome.error = error.what();
            is_left_between = true;
            left_between_.push_back(std::move(item.prepared));
        } catch (const std::exception& error) {
            item.outcome.error = error.what();
        }
        needs_recovery_ |= is_left_between;
        if (item.number != number)
            outcomes.push_back(encode(ChangeOutcome{number, FileState::as_before, {}, false}));
        if (!is_left_between)
            outcomes.push_back(encode(
                ChangeOutcome{item.number, item.has_failed() ? FileState::as_before : FileState::as_changed,
                              item.outcome.identity, false}));
    }
    try {
        if (is_flush_due)
            flush_file_systems();
        const std::lock_guard lock(journal_mutex_);
        if (!outcomes.empty())
            journal().journal.append(outcomes);
    } catch (const std::exception&) {
        // Left out: the next start finds out by itself what became of the files.
        needs_recovery_ = true;
    }
}

/// A run that is cut off while this one is under way may have left files half-written that are in the batch
/// now. Since they are locked nobody writes them any more, so that what its journal says is the last word.
void RunWriter::give_way(std::vector<Waiting>& batch) {
    try {
        // One with files that cannot be reached stays: it is looked at once, and when such a file is met.
        bool is_recovery_due = find_half_written(store_, half_written_);
        for (Waiting& item : batch) {
            if (item.has_failed() || !std::ranges::any_of(half_written_, [&](const auto& run) {
                    return run.second.contains(item.prepared.change);
                }))
                continue;
            item.fail("Another run was cut off while it wrote the file; that was put right, and nothing else "
                      "was changed");
            is_recovery_due = true;
        }
        if (is_recovery_due)
            recover_runs(store_, report_);
    } catch (const std::exception& error) {
        const std::lock_guard lock(journal_mutex_);
        if (!journal_ && why_not_begun_.empty())
            why_not_begun_ = error.what(); // no journal can be begun where none can be looked for
        for (Waiting& item : batch)
            if (!item.has_failed())
                item.fail(error.what());
    }
}

/// What is going to happen is on the medium before it happens.
void RunWriter::note(std::vector<Waiting>& batch) {
    std::vector<std::string> records;
    for (Waiting& item : batch) {
        if (item.has_failed())
            continue;
        item.number = next_number_++;
        records.push_back(encode(NotedChange{item.number, item.prepared.change}));
    }
    if (records.empty())
        return;
    try {
        const std::lock_guard lock(journal_mutex_);
        journal().journal.append(records);
        journal().journal.flush();
    } catch (const std::exception& error) {
        for (Waiting& item : batch)
            if (!item.has_failed())
                item.fail(error.what());
    }
}

void RunWriter::carry_out(Waiting& item) {
    remember_file_system(item.prepared.file);
    try {
        item.outcome.identity = apply_change(item.prepared);
    } catch (const ShiftRefused&) {
        carry_out_without_shift(item);
    }
}

void RunWriter::carry_out_without_shift(Waiting& item) {
    const FileChange& refused = item.prepared.change;
    const FileEdit edit = edit_of(refused);
    ChangeOptions options{refused.modified, {}, false};
    item.prepared = prepare_change(std::move(item.prepared.file), edit, options, names());
    if (item.prepared.replacement)
        item.prepared.replacement->file().sync();
    item.number = next_number_++;
    const std::string record = encode(NotedChange{item.number, item.prepared.change});
    {
        const std::lock_guard lock(journal_mutex_);
        journal().journal.append({&record, 1});
        journal().journal.flush();
    }
    item.outcome.identity = apply_change(item.prepared);
}

void RunWriter::remember_file_system(const OpenFile& file) {
    const dev_t device = file.status().st_dev;
    if (file_systems_.contains(device))
        return;
    // Not a copy of its descriptor: it would stay locked.
    file_systems_.emplace(device, open_within(file.calls(), file.path()));
}

void RunWriter::flush_file_systems() {
    for (const auto& [device, file] : file_systems_)
        if (store_.calls().sync_file_system(file.descriptor()) != 0)
            throw_system_error(errno, "The files were written, but not all may be on the disk");
}

std::uint64_t RunWriter::finish() {
    {
        const std::lock_guard lock(queue_mutex_);
        is_ending_ = true;
        queue_changed_.notify_all();
    }
    if (thread_.joinable())
        thread_.join();
    const std::lock_guard lock(journal_mutex_);
    if (!journal_)
        return 0;
    const std::vector<PreparedChange> left_between =
        std::exchange(left_between_, {}); // goes after the journal
    OpenRun run = std::move(*journal_);
    journal_.reset();
    flush_file_systems();
    file_systems_.clear();
    const std::uint64_t number = run.number;
    if (needs_recovery_)
        throw vantaro_io::exception_io(
            "Not all that happened could be put right or noted; the next start looks after it");
    if (written_ == 0) {
        store_.discard(std::move(run));
        return 0;
    }
    store_.end(std::move(run), {written_, false});
    return number;
}

} // namespace vantaro::core
