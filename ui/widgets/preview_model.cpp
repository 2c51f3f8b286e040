#include "ui/widgets/preview_model.h"

#include "engine/change_text.h"
#include "host/shared/text.h"
#include "ui/widgets/tool_tip.h"

#include <QFont>

#include <algorithm>
#include <limits>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr std::size_t remembered_rows = 500;
// Of a comparison: it must not cover the screen.
constexpr std::size_t compared_fields = 20;
constexpr std::size_t compared_values = 4;
constexpr std::size_t compared_characters = 50;

QString more(std::size_t count) {
    return QStringLiteral("(%1 more)").arg(count);
}

QString heading(const std::string& field) {
    return QString::fromStdString(first_line(limit_text(field, compared_characters)))
        .toUpper()
        .toHtmlEscaped();
}

/// The values of a field in one cell of a table; nothing for an absent one.
QString cell(const TrackInfoRecord& tags, const std::string& name) {
    const std::size_t field = tags.find_field(name.c_str());
    if (field == no_field)
        return QStringLiteral("<td></td>");
    const std::vector<std::string>& values = tags.fields()[field].values;
    QStringList lines;
    for (std::size_t i = 0; i < std::min(values.size(), compared_values); ++i)
        lines
            << QString::fromStdString(first_line(limit_text(values[i], compared_characters))).toHtmlEscaped();
    if (values.size() > compared_values)
        lines << more(values.size() - compared_values);
    const QString text = lines.join(QStringLiteral("<br>"));
    return QStringLiteral("<td>") + text + QStringLiteral("</td>");
}

} // namespace

void PreviewModel::redraw() {
    if (is_paused_)
        return;
    previews_.clear();
    if (const int rows = rowCount({}); rows > 0)
        emit dataChanged(index(0, 0), index(rows - 1, column_count - 1));
}

void PreviewModel::redraw(std::size_t row) {
    if (is_paused_)
        return;
    previews_.erase(row);
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

const Preview& PreviewModel::preview(std::size_t row) const {
    if (const auto known = previews_.find(row); known != previews_.end())
        return known->second;
    static const Preview unknown;
    if (is_paused_)
        return unknown;
    if (previews_.size() >= remembered_rows)
        previews_.clear();
    const PreviewedScript now = script_();
    return previews_[row] = rows_.preview(now.script, row, now.skipped);
}

QVariant PreviewModel::data(const QModelIndex& index, int role) const {
    const auto row = static_cast<std::size_t>(index.row());
    const bool is_output = index.column() == output_column;
    switch (role) {
    case Qt::DisplayRole:
        return QString::fromStdString(is_output ? preview(row).text : rows_.name(row));
    case Qt::FontRole:
        if (preview(row).effect == Effect::change) {
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
    if (is_paused_)
        return {};
    const PreviewedScript now = script_();
    PreviewRows::Tags tags;
    try {
        tags = rows_.tags(now.script, row, now.skipped);
    } catch (const std::exception& failure) {
        return plain_tool_tip(QString::fromUtf8(failure.what()));
    }
    const std::vector<std::string> names = changed_fields(tags.before, tags.after);
    if (names.empty())
        return QString::fromUtf8(no_changes);
    QString text = QStringLiteral("<table cellpadding=3><tr><th></th><th align=left>Before</th>"
                                  "<th align=left>After</th></tr>");
    for (std::size_t i = 0; i < std::min(names.size(), compared_fields); ++i)
        text += QStringLiteral("<tr><td><b>") + heading(names[i]) + QStringLiteral("</b></td>")
                + cell(tags.before, names[i]) + cell(tags.after, names[i]) + QStringLiteral("</tr>");
    if (names.size() > compared_fields)
        text += QStringLiteral("<tr><td colspan=3>%1</td></tr>").arg(more(names.size() - compared_fields));
    return text + QStringLiteral("</table>");
}

} // namespace quorvex
