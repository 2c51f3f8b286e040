#include "vantaro/journal/run_store.h"

#include "host/api/exceptions.h"
#include "vantaro/common/present.h"
#include "vantaro/common/system_error.h"
#include "vantaro/journal/shrink.h"
#include "vantaro/storage/default_folders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace vantaro::core {

namespace fs = std::filesystem;

namespace {

constexpr const char* open_ending = ".open";
constexpr const char* ended_ending = ".run";
constexpr std::size_t digits = 8;
/// A smaller journal is not worth the time.
constexpr std::uint64_t worth_shrinking = 16 << 10;

void append(JournalFile& journal, const Record& record) {
    const std::string bytes = encode(record);
    journal.append({&bytes, 1});
}

template <class Kind>
std::optional<Kind> decode_as(const std::optional<std::string>& bytes) {
    if (!bytes || !begins<Kind>(*bytes))
        return std::nullopt;
    return std::get<Kind>(decode(*bytes));
}

} // namespace

std::string RunStore::path(std::uint64_t number, const char* ending) const {
    std::string name = std::to_string(number);
    if (name.size() < digits)
        name.insert(0, digits - name.size(), '0');
    return folder_ + '/' + name + ending;
}

void RunStore::check_folder() const {
    if (folder_.empty())
        return;
    struct stat folder;
    if (::stat(folder_.c_str(), &folder) != 0) {
        if (errno != ENOENT)
            throw_system_error(errno, folder_);
        return;
    }
    if (folder.st_uid != ::geteuid() || (folder.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        throw vantaro_io::exception_io_denied(folder_
                                              + ": The folder belongs to another user, or others can write "
                                                "to it, so that no run is kept there");
}

/// Newest first.
std::vector<RunStore::Entry> RunStore::entries() const {
    check_folder();
    std::vector<Entry> found;
    if (folder_.empty())
        return found;
    std::error_code error;
    for (fs::directory_iterator it(folder_, error), end; !error && it != end; it.increment(error)) {
        const fs::path name = it->path().filename();
        const std::string stem = name.stem();
        Entry entry;
        const auto [rest, problem] = std::from_chars(stem.data(), stem.data() + stem.size(), entry.number);
        entry.is_open = name.extension() == open_ending;
        if (problem == std::errc() && rest == stem.data() + stem.size()
            && (entry.is_open || name.extension() == ended_ending))
            found.push_back(entry);
    }
    if (error && error != std::errc::no_such_file_or_directory)
        throw_system_error(error.value(), folder_);
    std::ranges::sort(found, std::ranges::greater(), &Entry::number);
    return found;
}

OpenRun RunStore::begin(const RunStart& start) {
    if (folder_.empty())
        throw vantaro_io::exception_io_not_found(no_home_folder);
    make_folder(folder_);
    check_folder();
    const FileLock lock(folder_ + "/lock"); // numbers are given once, and nobody finds a journal unlocked
    const std::vector<Entry> present = entries();
    const std::uint64_t number = present.empty() ? 1 : present.front().number + 1;
    OpenRun run{number, JournalFile::create(calls_, path(number, open_ending))};
    try {
        append(run.journal, start);
        sync_folder(folder_);
    } catch (const std::exception&) {
        calls_.unlink(run.journal.path());
        throw;
    }
    return run;
}

void RunStore::end(OpenRun run, const RunEnd& end) {
    append(run.journal, end);
    run.journal.flush();
    close(std::move(run));
}

void RunStore::close(OpenRun run) {
    const std::string final_path = path(run.number, ended_ending);
    if (calls_.rename(run.journal.path(), final_path) != 0)
        throw_system_error(errno, run.journal.path());
    try {
        if (run.journal.size() > worth_shrinking)
            shrink_journal(calls_, final_path);
    } catch (const std::exception&) {
        // It does as it is.
    }
    if (retention_)
        try {
            prune(*retention_, present());
        } catch (const std::exception&) {
            // The next run tries again.
        }
}

void RunStore::discard(OpenRun run) {
    if (calls_.unlink(run.journal.path()) != 0)
        throw_system_error(errno, run.journal.path());
}

std::optional<RunSummary> RunStore::summary(const Entry& entry) const {
    RunSummary result;
    result.number = entry.number;
    result.is_open = entry.is_open;
    try {
        const OpenFile file =
            open_journal(calls_, path(entry.number, entry.is_open ? open_ending : ended_ending), O_RDONLY);
        JournalReader reader(file);
        const auto start = decode_as<RunStart>(reader.next());
        result.is_damaged = !start;
        result.start = start.value_or(RunStart());
        result.bytes = file.identity().size;
        if (entry.is_open) {
            result.was_cut_off = is_abandoned(file);
            return start ? std::optional(result) : std::nullopt; // it may be about to be begun
        }
        const auto end = decode_as<RunEnd>(reader.last(encode(RunEnd()).size()));
        result.is_damaged |= !end;
        result.files = end ? end->files : made_changes(file).changes.size();
        result.was_cut_off = end && end->was_cut_off;
    } catch (const std::exception&) {
        return std::nullopt; // no journal, or gone since the folder was listed
    }
    return result;
}

std::vector<RunSummary> RunStore::runs() const {
    std::vector<RunSummary> result;
    for (const Entry& entry : entries())
        if (std::optional<RunSummary> run = summary(entry))
            result.push_back(std::move(*run));
    return result;
}

OpenFile RunStore::open(std::uint64_t number) const {
    const std::string name = "Run " + std::to_string(number);
    try {
        check_folder();
        return open_journal(calls_, path(number, ended_ending), O_RDONLY);
    } catch (const vantaro_io::exception_io_not_found&) {
        if (fs::exists(path(number, open_ending)))
            throw vantaro_io::exception_io(name + " is still under way, or its journal cannot be used");
        throw vantaro_io::exception_io_not_found(name + ": there is no such run, or it is no longer kept");
    }
}

AbandonedRuns RunStore::take_over_abandoned(const std::function<void(const std::string& line)>& report,
                                            const std::function<bool(std::uint64_t number)>& is_known) {
    AbandonedRuns result;
    const std::vector<Entry> present = entries();
    if (std::ranges::none_of(present, &Entry::is_open))
        return result;
    result.lock = std::make_unique<FileLock>(folder_ + "/lock");
    for (const Entry& entry : entries()) {
        if (!entry.is_open || is_known(entry.number))
            continue;
        try {
            if (auto journal = JournalFile::take_over(calls_, path(entry.number, open_ending)))
                result.runs.push_back({entry.number, std::move(*journal)});
        } catch (const std::exception& error) {
            report(error.what());
        }
    }
    return result;
}

/// What a process left behind while it made a journal smaller; one that is still at it holds its lock.
void RunStore::remove_abandoned(const std::string& path) {
    try {
        if (JournalFile::take_over(calls_, path))
            calls_.unlink(path);
    } catch (const vantaro_io::exception_io&) {
        // Gone meanwhile.
    }
}

void RunStore::remove_leftovers() {
    check_folder();
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder_, ignored))
        if (entry.path().extension() == ".new" && entry.path().stem().extension() == ended_ending)
            remove_abandoned(entry.path());
}

void RunStore::prune(const Retention& retention, std::int64_t now) {
    constexpr std::int64_t nanoseconds_a_day = 86'400'000'000'000;
    std::uint64_t total = 0;
    bool is_newest = true;
    std::optional<std::int64_t> last_but_one;
    for (const Entry& entry : entries()) {
        if (entry.is_open)
            continue;
        const std::string name = path(entry.number, ended_ending);
        std::error_code error;
        const std::uint64_t size = fs::file_size(name, error);
        if (error)
            continue;
        total += size;
        const std::optional<RunSummary> run = summary(entry);
        if (run && !is_newest && !last_but_one)
            last_but_one = run->start.time;
        const bool is_old =
            run && last_but_one
            && std::min(now, *last_but_one) - run->start.time > retention.days * nanoseconds_a_day;
        if ((is_old || total > retention.bytes) && !is_newest) {
            calls_.unlink(name);
            total -= size;
        }
        is_newest = false;
    }
}

} // namespace vantaro::core
