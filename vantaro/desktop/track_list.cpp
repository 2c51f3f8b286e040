#include "vantaro/desktop/track_list.h"

#include <QDragEnterEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QUrl>

#include <algorithm>

namespace vantaro::core {

namespace {

/// Rows with some air in them.
class RowDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QSize size = QStyledItemDelegate::sizeHint(option, index);
        return {size.width(), std::max(size.height(), option.fontMetrics.height() * 3 / 2)};
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        // Numbers would touch the text of the next column.
        if (option->displayAlignment.testFlag(Qt::AlignRight))
            option->text += number_margin;
    }
};

} // namespace

TrackList::TrackList(TrackModel& model, QWidget* parent) : QTreeView(parent), model_(model) {
    setObjectName(QStringLiteral("tracks"));
    setAccessibleName(QStringLiteral("Tracks"));
    setModel(&model);
    setItemDelegate(new RowDelegate(this));
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    setTextElideMode(Qt::ElideRight);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setDragDropMode(DropOnly);

    header()->setSortIndicatorClearable(true);
    header()->setSortIndicator(-1, Qt::AscendingOrder);
    header()->setSectionsMovable(true);
    header()->setFirstSectionMovable(true);
    header()->setStretchLastSection(false);
    header()->setTextElideMode(Qt::ElideRight);
    header()->setContextMenuPolicy(Qt::CustomContextMenu);
    setSortingEnabled(true);
    reset_columns();
}

void TrackList::reset_columns() {
    const int character = fontMetrics().averageCharWidth();
    const int arrow = style()->pixelMetric(QStyle::PM_HeaderMarkSize, nullptr, this);
    for (const ColumnInfo& column : all_columns()) {
        const int section = static_cast<int>(column.column);
        const int heading = fontMetrics().horizontalAdvance(QString::fromLatin1(column.heading));
        header()->moveSection(header()->visualIndex(section), section);
        header()->resizeSection(section, std::max(column.width * character, heading + arrow + 3 * character));
        setColumnHidden(section, !column.is_visible_at_first);
    }
}

int TrackList::width_of_columns() const {
    return header()->length() + style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
}

bool TrackList::is_last_visible(Column column) const {
    return !isColumnHidden(static_cast<int>(column))
           && header()->hiddenSectionCount() == static_cast<int>(column_count) - 1;
}

std::vector<int> TrackList::selected_rows() const {
    std::vector<int> rows;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.push_back(row);
    std::ranges::sort(rows);
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

std::size_t TrackList::selected_count() const {
    return selected_rows().size();
}

std::vector<Track*> TrackList::selected_tracks() const {
    std::vector<Track*> tracks;
    for (const int row : selected_rows())
        tracks.push_back(&model_.track(row));
    return tracks;
}

std::vector<Track*> TrackList::visible_tracks() const {
    const QModelIndex first = indexAt(QPoint(0, 0));
    if (!first.isValid())
        return {};
    const QModelIndex last = indexAt(QPoint(0, viewport()->height() - 1));
    std::vector<Track*> tracks;
    for (int row = first.row(); row <= (last.isValid() ? last.row() : model_.rowCount() - 1); ++row)
        tracks.push_back(&model_.track(row));
    return tracks;
}

// The base class goes through the rows one by one, here and in the following.
void TrackList::selectAll() {
    if (const int rows = model_.rowCount(); rows > 0)
        selectionModel()->select(
            QItemSelection(model_.index(0, 0), model_.index(rows - 1, model_.columnCount() - 1)),
            QItemSelectionModel::ClearAndSelect);
}

void TrackList::dataChanged(const QModelIndex&, const QModelIndex&, const QList<int>&) {
    viewport()->update(); // all rows have one height: there is nothing to lay out
}

void TrackList::paintEvent(QPaintEvent* event) {
    QTreeView::paintEvent(event);
    if (model_.rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const int margin = fontMetrics().height();
    painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignCenter | Qt::TextWordWrap,
                     QStringLiteral("Drop music files or folders here, or press Ctrl+O"));
}

void TrackList::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
}

void TrackList::dragMoveEvent(QDragMoveEvent* event) {
    if (event->mimeData()->hasUrls()) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    }
}

void TrackList::dropEvent(QDropEvent* event) {
    // Names that are not UTF-8 come through only as they are encoded.
    std::vector<std::string> locations;
    for (const QUrl& url : event->mimeData()->urls())
        locations.push_back(url.toEncoded().toStdString());
    if (locations.empty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (on_drop)
        on_drop(std::move(locations));
}

} // namespace vantaro::core
