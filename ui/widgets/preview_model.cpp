#include "ui/widgets/preview_model.h"

#include "engine/change_text.h"
#include "host/shared/text.h"

#include <QFont>

#include <limits>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr std::size_t remembered_rows = 500;
constexpr std::size_t compared_fields = 30;
constexpr std::size_t compared_characters = 80;

/// The values of a field in one cell of a table; nothing for an absent one.
QString cell(const TrackInfoRecord& tags, const std::string& name) {
    const std::size_t field = tags.find_field(name.c_str());
    if (field == no_field)
        return QStringLiteral("<td></td>");
    QString text;
    for (const std::string& value : tags.fields()[field].values) {
        if (!text.isEmpty())
            text += QStringLiteral("<br>");
        text += QString::fromStdString(first_line(limit_text(value, compared_characters))).toHtmlEscaped();
    }
    return QStringLiteral("<td>") + text + QStringLiteral("</td>");
}

} // namespace

void PreviewModel::redraw() {
    outputs_.clear();
    if (const int rows = rowCount({}); rows > 0)
        emit dataChanged(index(0, 0), index(rows - 1, column_count - 1));
}

void PreviewModel::redraw(std::size_t row) {
    outputs_.erase(row);
    const int number = static_cast<int>(row);
    emit dataChanged(index(number, 0), index(number, column_count - 1));
}

int PreviewModel::rowCount(const QModelIndex& parent) const {
    constexpr std::size_t most = std::numeric_limits<int>::max();
    return parent.isValid() ? 0 : static_cast<int>(std::min(rows_.tracks().size(), most));
}

int PreviewModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : column_count;
}

const std::string& PreviewModel::output(std::size_t row) const {
    if (const auto known = outputs_.find(row); known != outputs_.end())
        return known->second;
    if (outputs_.size() >= remembered_rows)
        outputs_.clear();
    const PreviewedScript now = script_();
    return outputs_[row] = rows_.output(now.script, row, now.skipped);
}

QVariant PreviewModel::data(const QModelIndex& index, int role) const {
    const auto row = static_cast<std::size_t>(index.row());
    const bool is_output = index.column() == output_column;
    switch (role) {
    case Qt::DisplayRole:
        return QString::fromStdString(is_output ? output(row) : rows_.name(row));
    case Qt::FontRole:
        if (output(row) != no_changes) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return {};
    case Qt::ToolTipRole:
        return comparison(row);
    default:
        return {};
    }
}

QVariant PreviewModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == name_column ? QStringLiteral("Name") : QStringLiteral("Output preview");
}

QString PreviewModel::comparison(std::size_t row) const {
    const PreviewedScript now = script_();
    PreviewRows::Tags tags;
    try {
        tags = rows_.tags(now.script, row, now.skipped);
    } catch (const std::exception& failure) {
        return QString::fromUtf8(failure.what()).toHtmlEscaped();
    }
    const std::vector<std::string> names = changed_fields(tags.before, tags.after);
    if (names.empty())
        return QString::fromUtf8(no_changes);
    QString text = QStringLiteral("<table cellpadding=3><tr><th></th><th align=left>Before</th>"
                                  "<th align=left>After</th></tr>");
    for (std::size_t i = 0; i < std::min(names.size(), compared_fields); ++i)
        text += QStringLiteral("<tr><td><b>") + QString::fromStdString(names[i]).toUpper().toHtmlEscaped()
                + QStringLiteral("</b></td>") + cell(tags.before, names[i]) + cell(tags.after, names[i])
                + QStringLiteral("</tr>");
    return text + QStringLiteral("</table>");
}

} // namespace quorvex
