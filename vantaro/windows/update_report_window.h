// What an update leaves to be said: which files failed, and why.
//
//     show_update_report(report, "updated", std::move(failed), parent);
//
// Main thread.
#pragma once

#include "vantaro/update/update_job.h"

#include <QWidget>

#include <string>
#include <vector>

namespace vantaro::core {

struct FailedFile {
    std::string path;
    std::string reason;
};

/// One line: "12 of 14 files updated, 2 failed", where `done` is "updated".
std::string update_summary(const UpdateReport& report, const std::string& done);

/// Shows a window and returns. It belongs to `parent` (nullptr for none), and deletes itself when it is
/// closed. There may be any number of files.
void show_update_report(const UpdateReport& report, const std::string& done, std::vector<FailedFile> failed,
                        QWidget* parent);

} // namespace vantaro::core
