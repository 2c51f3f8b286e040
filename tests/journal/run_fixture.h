// What the tests of runs share: a folder with files, and runs that edit them.
#pragma once

#include "tests/support/made_bytes.h"
#include "tests/support/made_file_system.h"
#include "tests/support/temporary_folder.h"
#include "vantaro/journal/recovery.h"
#include "vantaro/journal/run_writer.h"
#include "vantaro/journal/undo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace vantaro::core::test {

using vantaro::test::common_system;
using vantaro::test::common_traits;
using vantaro::test::MadeFileSystem;
using vantaro::test::noise;
using vantaro::test::pattern;
using vantaro::test::TemporaryFolder;

inline std::string edited(std::string bytes, const std::vector<Splice>& splices) {
    for (auto splice = splices.rbegin(); splice != splices.rend(); ++splice)
        bytes.replace(splice->offset, splice->size, splice->bytes);
    return bytes;
}

class RunTest : public testing::Test {
protected:
    using Edits = std::map<std::string, std::vector<Splice>>;

    RunStore store(SystemCalls& calls = common_system()) const { return {folder.path("runs"), calls}; }
    /// Edits files in one run. Returns the error of each that failed.
    std::map<std::string, std::string> run(const Edits& edits, SystemCalls& calls = common_system()) const {
        RunStore runs = store(calls);
        std::map<std::string, std::string> errors;
        RunWriter writer(runs, {1, "test", 0});
        for (const auto& [name, splices] : edits) {
            try {
                OpenFile file = OpenFile::open_for_change(calls, folder.path(name));
                const std::uint64_t size = file.identity().size;
                const FileEdit edit{size, splices, {{0, size}}};
                writer.submit(writer.prepare(std::move(file), edit, {}),
                              [&errors, name = name](const WrittenFile& written) {
                                  if (!written.error.empty())
                                      errors[name] = written.error;
                              });
            } catch (const std::exception& error) {
                writer.wait();
                errors[name] = error.what();
            }
        }
        writer.wait();
        try {
            writer.finish();
        } catch (const std::exception& error) {
            errors[""] = error.what();
        }
        return errors;
    }
    std::vector<std::string> recover(SystemCalls& calls = common_system()) const {
        RunStore runs = store(calls);
        std::vector<std::string> lines;
        recover_runs(runs, [&](const std::string& line) { lines.push_back(line); });
        return lines;
    }
    /// Returns the errors by path.
    std::map<std::string, std::string> undo(std::uint64_t number, bool times = false,
                                            SystemCalls& calls = common_system()) const {
        struct Observer : UndoObserver {
            void on_file(const std::string& path, const std::string& error, std::size_t,
                         std::size_t) override {
                if (!error.empty())
                    errors[std::filesystem::path(path).filename()] = error;
            }
            std::map<std::string, std::string> errors;
        } observer;
        const AbortSignal abort;
        RunStore runs = store(calls);
        const UndoReport report = undo_run(runs, number, {times, 2}, observer, abort);
        EXPECT_EQ(report.total, report.put_back + report.failed);
        EXPECT_EQ(report.failed == 0, observer.errors.empty());
        return observer.errors;
    }
    /// Makes a run of one digit one that did not come to its end.
    void cut_off(std::uint64_t number) const {
        const std::string path = folder.path("runs/0000000" + std::to_string(number));
        std::filesystem::rename(path + ".run", path + ".open");
        constexpr std::size_t head = 8;
        const std::size_t end = head + encode(RunEnd()).size();
        std::filesystem::resize_file(path + ".open", std::filesystem::file_size(path + ".open") - end);
    }
    std::vector<std::string> names_in(const std::string& place) const {
        std::vector<std::string> names;
        std::error_code error; // a folder that is not there has none
        for (const auto& entry : std::filesystem::directory_iterator(folder.path(place), error))
            names.push_back(entry.path().filename());
        std::ranges::sort(names);
        return names;
    }

    TemporaryFolder folder;
};

} // namespace vantaro::core::test
