// PreviewModel: the editor's tracks as the rows of a table: name, and what the script would change. Rows are
// computed when they are shown.
//
// Main thread.
#pragma once

#include "engine/preview_rows.h"

#include <QAbstractTableModel>

#include <functional>
#include <map>

namespace quorvex {

/// The script that rows are computed with, and the action in it that is not to be applied yet (or nullptr).
struct PreviewedScript {
    const Script& script;
    const Action* skipped;
};

class PreviewModel final : public QAbstractTableModel {
public:
    enum Column { name_column, output_column, column_count };

    PreviewModel(PreviewRows& rows, std::function<PreviewedScript()> script)
        : rows_(rows), script_(std::move(script)) {}

    /// Everything may have changed.
    void redraw();
    void redraw(std::size_t row);
    /// Whether the script's actions are left alone: rows show what is known of them already. What was to be
    /// redrawn meanwhile is not, until redraw().
    void set_paused(bool paused) { is_paused_ = paused; }

    int rowCount(const QModelIndex& parent) const override;
    int columnCount(const QModelIndex& parent) const override;
    /// What the script changes is bold; the tooltip has the changed fields before and after side by side.
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    const Preview& preview(std::size_t row) const;
    QString comparison(std::size_t row) const;

    PreviewRows& rows_;
    const std::function<PreviewedScript()> script_;
    /// Of the rows shown since the last change: a row is asked for several times while it is drawn.
    mutable std::map<std::size_t, Preview> previews_;
    bool is_paused_ = false;
};

} // namespace quorvex
