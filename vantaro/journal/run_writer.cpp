#include "vantaro/journal/run_writer.h"

#include "host/api/exceptions.h"
#include "vantaro/common/system_error.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>
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
    return ".vantaro-" + std::to_string(device()) + '-';
}

} // namespace

RunWriter::RunWriter(RunStore& store, RunStart start)
    : store_(store), start_(std::move(start)), temporary_prefix_(random_prefix()),
      thread_([this] { commit_batches(); }) {}

RunWriter::~RunWriter() {
    try {
        finish();
    } catch (const std::exception&) {
        // The journal tells the next start.
    }
}

OpenRun& RunWriter::journal() {
    if (!journal_)
        journal_.emplace(store_.begin(start_));
    return *journal_;
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

PreparedChange RunWriter::prepare(OpenFile file, const FileEdit& edit, const ChangeOptions& options) {
    return prepare_change(std::move(file), edit, options,
                          {[this](const std::string& folder) { return temporary_name(folder); },
                           [this](const std::string& path) { announce_temporary(path); }});
}

void RunWriter::submit(PreparedChange change, Done done) {
    const std::size_t bytes = change.memory();
    std::unique_lock lock(queue_mutex_);
    queue_changed_.wait(lock, [&] {
        return queue_.empty()
               || (queue_.size() < most_files_waiting && queued_bytes_ + bytes <= most_waiting);
    });
    queued_bytes_ += bytes;
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
        commit(batch);
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
            item.outcome.error = error.what();
        }
    }
    note(batch);
    std::vector<std::string> outcomes;
    for (Waiting& item : batch) {
        if (item.has_failed())
            continue;
        const std::uint64_t number = item.number;
        bool is_left_between = false;
        try {
            carry_out(item);
            ++written_;
        } catch (const LeftBetween& error) {
            item.outcome.error = error.what();
            is_left_between = true;
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
        const std::lock_guard lock(journal_mutex_);
        if (!outcomes.empty())
            journal().journal.append(outcomes);
    } catch (const std::exception&) {
        // Left out: the next start finds out by itself what became of the files.
        needs_recovery_ = true;
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
                item.outcome.error = error.what();
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
    const ChangeOptions options{refused.modified, refused.restores, false};
    item.prepared = prepare(std::move(item.prepared.file), edit, options);
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
    const int copy = ::fcntl(file.descriptor(), F_DUPFD_CLOEXEC, 0);
    if (copy < 0)
        throw_system_error(errno);
    file_systems_.emplace(device, OpenFile(file.calls(), copy, file.path()));
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
    OpenRun run = std::move(*journal_);
    journal_.reset();
    for (const auto& [device, file] : file_systems_)
        if (store_.calls().sync_file_system(file.descriptor()) != 0)
            throw_system_error(errno, "The files were written, but not all may be on the disk");
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
