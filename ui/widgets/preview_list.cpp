#include "ui/widgets/preview_list.h"

#include <QFontMetricsF>
#include <QHeaderView>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace quorvex {

void set_up_preview_list(QTableView& list, PreviewModel& model) {
    list.setModel(&model);
    list.setAccessibleName("Tracks to process");
    list.horizontalHeader()->setStretchLastSection(true);
}

void fit_names(QTableView& list) {
    constexpr int most_rows = 200;
    QFont bold = list.font();
    bold.setBold(true);
    const QFontMetricsF metrics(bold); // the view cuts what is a fraction of a pixel too wide
    qreal widest = 0;
    for (int row = 0; row < std::min(most_rows, list.model()->rowCount()); ++row) {
        const QModelIndex name = list.model()->index(row, PreviewModel::name_column);
        widest = std::max(widest, metrics.horizontalAdvance(name.data().toString()));
    }
    const int margin = list.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &list) + 1;
    const int heading = list.horizontalHeader()->sectionSizeHint(PreviewModel::name_column);
    const int wanted = std::max(static_cast<int>(std::ceil(widest)) + 2 * margin + 1, heading);
    list.setColumnWidth(PreviewModel::name_column, std::min(wanted, list.viewport()->width() / 2));
}

} // namespace quorvex
