// The list of tracks as a widget: rows that can be selected, columns that can be moved, hidden and sorted by,
// and files and folders that can be dropped.
//
//     TrackList list(model, &window);
//     list.on_drop = [&](std::vector<std::string> locations) { loader.add(std::move(locations)); };
//
// Main thread.
#pragma once

#include "vantaro/desktop/track_model.h"

#include <QTreeView>

#include <functional>
#include <string>
#include <vector>

namespace vantaro::core {

class TrackList final : public QTreeView {
public:
    /// `model` outlives the list.
    TrackList(TrackModel& model, QWidget* parent);

    /// In the order in which they stand in the list.
    std::vector<int> selected_rows() const;
    std::vector<Track*> selected_tracks() const;
    std::size_t selected_count() const;
    /// The tracks that can be seen at the moment.
    std::vector<Track*> visible_tracks() const;

    void selectAll() override;
    void dataChanged(const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) override;

    /// Makes the columns as wide as they are at first.
    void reset_columns();
    /// As wide as the list must be for all columns to be seen.
    int width_of_columns() const;
    /// Whether the column is the only one left.
    bool is_last_visible(Column column) const;

    /// Files, folders and URLs that were dropped, as TrackLoader takes them.
    std::function<void(std::vector<std::string> locations)> on_drop;

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    TrackModel& model_;
};

} // namespace vantaro::core
