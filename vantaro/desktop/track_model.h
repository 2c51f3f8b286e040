// The tracks of the list, as the view shows them.
//
//     TrackModel model(report);
//     view.setModel(&model);
//     model.add({&track});
//     ...
//     model.refresh();                               // what the host holds of the tracks has changed
//
// A track stands in the list once. Cells read what the host holds at the moment of painting: nothing of it is
// kept here. Main thread.
#pragma once

#include "vantaro/desktop/background_work.h"
#include "vantaro/desktop/columns.h"

#include <QAbstractTableModel>

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vantaro::core {

class TrackModel final : public QAbstractTableModel {
public:
    /// `report` takes a line about what went wrong in the background.
    explicit TrackModel(std::function<void(const std::string& line)> report);

    /// Appends the tracks that are not there yet. Returns those.
    std::vector<Track*> add(const std::vector<Track*>& tracks);
    /// Removes these rows, which are sorted and different.
    void remove(const std::vector<int>& rows);
    void clear();

    Track& track(int row) const { return *rows_[static_cast<std::size_t>(row)].track; }
    bool contains(const Track& track) const { return present_.contains(&track); }

    /// The tags of the track could not be read, and why; an empty text: they could.
    void set_failure(const Track& track, const QString& reason);
    bool has_failed(const Track& track) const { return failures_.contains(&track); }
    std::size_t failure_count() const { return failures_.size(); }
    /// Why; an empty text when it has not failed.
    QString failure(const Track& track) const;

    /// Something has changed in what the host holds: shows it.
    void refresh();

    /// Sorts in the background; the rows move when it is done. Column -1 is the order in which the tracks
    /// came.
    void sort(int column, Qt::SortOrder order) override;
    /// Sorts as last time. Rows that were added since stand behind the others until then.
    void sort_again();
    bool is_sorting() const { return sorting_.is_running(); }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    struct Row {
        Track* track;
        /// Counts the rows in the order in which they came.
        std::uint64_t arrival;
    };

    void apply_order(const std::vector<std::uint32_t>& order);
    void erase(std::size_t first, std::size_t last);

    std::vector<Row> rows_;
    std::unordered_set<const Track*> present_;
    std::unordered_map<const Track*, QString> failures_;
    std::uint64_t arrivals_ = 0;
    /// How often rows were removed or moved: an order that was found before is worth nothing afterwards.
    std::uint64_t rearrangements_ = 0;

    int sort_column_ = -1;
    Qt::SortOrder sort_order_ = Qt::AscendingOrder;
    bool sorts_again_ = false;
    BackgroundWork sorting_;
};

} // namespace vantaro::core
