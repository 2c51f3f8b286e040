#include "vantaro/desktop/track_model.h"

#include "vantaro/desktop/track_order.h"
#include "vantaro/windows/shown_text.h"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <numeric>

namespace vantaro::core {

namespace {

/// Removing runs of rows one by one costs time for each; beyond this many the view starts over instead.
constexpr std::size_t most_runs = 50;

Column column_of(const QModelIndex& index) {
    return static_cast<Column>(index.column());
}

/// What is wrong with a track, in two lines.
QString complaint(const Track& track, const QString& reason) {
    return reason.isEmpty() ? QString() : QString(shown_text(track.path()) + u'\n' + reason);
}

} // namespace

TrackModel::TrackModel(std::function<void(const std::string& line)> report) : sorting_(std::move(report)) {}

std::vector<Track*> TrackModel::add(const std::vector<Track*>& tracks) {
    std::vector<Track*> added;
    for (Track* track : tracks)
        if (present_.insert(track).second)
            added.push_back(track);
    if (added.empty())
        return added;
    const auto first = static_cast<int>(rows_.size());
    beginInsertRows({}, first, first + static_cast<int>(added.size()) - 1);
    for (Track* track : added)
        rows_.push_back({track, arrivals_++});
    endInsertRows();
    return added;
}

void TrackModel::erase(std::size_t first, std::size_t last) {
    for (std::size_t row = first; row < last; ++row) {
        present_.erase(rows_[row].track);
        failures_.erase(rows_[row].track);
    }
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(first),
                rows_.begin() + static_cast<std::ptrdiff_t>(last));
}

void TrackModel::remove(const std::vector<int>& rows) {
    if (rows.empty())
        return;
    ++rearrangements_;
    std::vector<std::pair<int, int>> runs; // first and last row
    for (const int row : rows) {
        if (!runs.empty() && runs.back().second + 1 == row)
            runs.back().second = row;
        else
            runs.emplace_back(row, row);
    }
    if (runs.size() <= most_runs) {
        for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
            beginRemoveRows({}, run->first, run->second);
            erase(static_cast<std::size_t>(run->first), static_cast<std::size_t>(run->second) + 1);
            endRemoveRows();
        }
        return;
    }
    beginResetModel();
    for (const int row : rows) {
        Track*& track = rows_[static_cast<std::size_t>(row)].track;
        present_.erase(track);
        failures_.erase(track);
        track = nullptr;
    }
    std::erase_if(rows_, [](const Row& row) { return row.track == nullptr; });
    endResetModel();
}

void TrackModel::clear() {
    ++rearrangements_;
    beginResetModel();
    rows_.clear();
    present_.clear();
    failures_.clear();
    endResetModel();
}

void TrackModel::set_failure(const Track& track, const QString& reason) {
    if (reason.isEmpty())
        failures_.erase(&track);
    else if (contains(track))
        failures_.insert_or_assign(&track, reason);
}

QString TrackModel::failure(const Track& track) const {
    const auto found = failures_.find(&track);
    return found == failures_.end() ? QString() : found->second;
}

void TrackModel::refresh() {
    if (!rows_.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

void TrackModel::sort(int column, Qt::SortOrder order) {
    sort_column_ = column;
    sort_order_ = order;
    sort_again();
}

void TrackModel::sort_again() {
    if (sorting_.is_running()) {
        sorts_again_ = true;
        sorting_.cancel();
        return;
    }
    sorts_again_ = false;
    std::vector<std::uint32_t> by_arrival;
    if (sort_column_ < 0) {
        by_arrival.resize(rows_.size());
        std::iota(by_arrival.begin(), by_arrival.end(), 0U);
        std::ranges::sort(by_arrival, {}, [this](std::uint32_t row) { return rows_[row].arrival; });
        apply_order(by_arrival);
        return;
    }
    std::vector<const Track*> tracks;
    tracks.reserve(rows_.size());
    for (const Row& row : rows_)
        tracks.push_back(row.track);
    sorting_.start([this, tracks = std::move(tracks), column = static_cast<Column>(sort_column_),
                    direction = sort_order_, rearrangements = rearrangements_](const AbortFlag& abort) {
        return [this, order = order_by(column, direction, tracks, abort), count = tracks.size(),
                rearrangements] {
            const bool still_fits = rearrangements == rearrangements_ && order.size() == count;
            if (still_fits)
                apply_order(order);
            if (sorts_again_ || !still_fits)
                sort_again();
        };
    });
}

void TrackModel::apply_order(const std::vector<std::uint32_t>& order) {
    if (std::ranges::is_sorted(order))
        return;
    ++rearrangements_;
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    std::vector<Row> sorted;
    sorted.reserve(rows_.size());
    for (const std::uint32_t row : order)
        sorted.push_back(rows_[row]);
    sorted.insert(sorted.end(), rows_.begin() + static_cast<std::ptrdiff_t>(order.size()), rows_.end());
    rows_ = std::move(sorted);

    if (const QModelIndexList old_places = persistentIndexList(); !old_places.isEmpty()) {
        std::vector<int> new_rows(rows_.size());
        std::iota(new_rows.begin(), new_rows.end(), 0);
        for (std::size_t i = 0; i < order.size(); ++i)
            new_rows[order[i]] = static_cast<int>(i);
        QModelIndexList new_places;
        new_places.reserve(old_places.size());
        for (const QModelIndex& place : old_places)
            new_places.append(index(new_rows[static_cast<std::size_t>(place.row())], place.column()));
        changePersistentIndexList(old_places, new_places);
    }
    emit layoutChanged({}, VerticalSortHint);
}

int TrackModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int TrackModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(column_count);
}

QVariant TrackModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const Track& shown = track(index.row());
    switch (role) {
    case Qt::DisplayRole:
        if (column_of(index) == Column::format && has_failed(shown))
            return QStringLiteral("unreadable");
        return cell_text(column_of(index), shown);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::Alignment(
            (column_info(column_of(index)).is_number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
    case Qt::ForegroundRole:
        if (has_failed(shown) || !shown.held())
            return QGuiApplication::palette().brush(QPalette::PlaceholderText);
        return {};
    case Qt::ToolTipRole:
        return shown_tip(complaint(shown, failure(shown)));
    case Qt::AccessibleDescriptionRole:
        return complaint(shown, failure(shown));
    default:
        return {};
    }
}

QVariant TrackModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    const ColumnInfo& column = column_info(static_cast<Column>(section));
    if (role == Qt::DisplayRole)
        return column.is_number ? QString(QString::fromLatin1(column.heading) + number_margin)
                                : QString::fromLatin1(column.heading);
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(
            Qt::Alignment((column.is_number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
    return {};
}

Qt::ItemFlags TrackModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren
                           : Qt::NoItemFlags;
}

} // namespace vantaro::core
