// The list of tracks in the editor, each with what the script would change.
//
//     set_up_preview_list(list, model);
//     window.show();
//     fit_names(list);
//
// Main thread.
#pragma once

#include "ui/widgets/preview_model.h"

#include <QTableView>

namespace quorvex {

/// `model` outlives the list, or is taken from it before.
void set_up_preview_list(QTableView& list, PreviewModel& model);

/// Makes the column of the names as wide as those of the first tracks need, up to half the list. They may
/// become bold, as those of tracks that change are.
void fit_names(QTableView& list);

} // namespace quorvex
