// What the window says of an update that has ended.
//
//     statusBar()->showMessage(outcome_text(report, undo->shortcut()));     // 12 files changed. Ctrl+Z ...
//
// Any thread.
#pragma once

#include "vantaro/update/update_job.h"

#include <QKeySequence>
#include <QString>

namespace vantaro::core {

/// One line. `undo_keys` are those that take the last run back, or none.
QString outcome_text(const UpdateReport& report, const QKeySequence& undo_keys);

} // namespace vantaro::core
