#include "vantaro/desktop/window_memory.h"

#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QSettings>

#include <algorithm>

namespace vantaro::core {

namespace {

const ColumnInfo* column_of(const QString& id) {
    const auto found = std::ranges::find_if(
        all_columns(), [&](const ColumnInfo& column) { return id == QLatin1String(column.id); });
    return found == all_columns().end() ? nullptr : &*found;
}

/// Columns by their names: the file outlives versions that have others.
void restore_columns(const QSettings& settings, TrackList& list) {
    QHeaderView& header = *list.header();
    constexpr int narrowest = 20;
    constexpr int widest = 5000;
    int place = 0;
    bool any_shown = false;
    for (const QString& entry : settings.value("columns/order").toStringList()) {
        const QStringList parts = entry.split(u':'); // "title:220:shown"
        const ColumnInfo* column = column_of(parts.value(0));
        if (!column)
            continue;
        const int section = static_cast<int>(column->column);
        header.moveSection(header.visualIndex(section), place++);
        if (const int width = parts.value(1).toInt(); width >= narrowest && width <= widest)
            header.resizeSection(section, width);
        const bool is_shown = parts.value(2) != u"hidden";
        list.setColumnHidden(section, !is_shown);
        any_shown |= is_shown;
    }
    if (place > 0 && !any_shown)
        list.setColumnHidden(static_cast<int>(Column::file_name), false);
    if (const ColumnInfo* column = column_of(settings.value("columns/sort").toString()))
        list.sortByColumn(static_cast<int>(column->column), settings.value("columns/descending").toBool()
                                                                ? Qt::DescendingOrder
                                                                : Qt::AscendingOrder);
}

} // namespace

namespace {

/// A pipe in its place would keep whoever opens it waiting.
bool may_be_opened(const QString& path) {
    const QFileInfo file(path);
    return !file.exists() || file.isFile();
}

} // namespace

WindowMemory::WindowMemory(const std::string& config_dir)
    : path_(QFile::decodeName(QByteArray::fromStdString(config_dir)) + "/window.ini") {}

void WindowMemory::restore(QMainWindow& window, TrackList& list) const {
    if (!may_be_opened(path_))
        return;
    const QSettings settings(path_, QSettings::IniFormat);
    window.restoreGeometry(settings.value("window/geometry").toByteArray());
    window.restoreState(settings.value("window/panels").toByteArray());
    restore_columns(settings, list);
}

bool WindowMemory::store(const QMainWindow& window, const TrackList& list) const {
    if (!may_be_opened(path_))
        return false;
    QDir().mkpath(QFileInfo(path_).path());
    // A file that is none of these is worth nothing, and would stay as it is.
    if (QSettings(path_, QSettings::IniFormat).status() == QSettings::FormatError)
        QFile::resize(path_, 0);
    QSettings settings(path_, QSettings::IniFormat);
    settings.setValue("window/geometry", window.saveGeometry());
    settings.setValue("window/panels", window.saveState());
    const QHeaderView& header = *list.header();
    QStringList columns;
    for (int place = 0; place < header.count(); ++place) {
        const int section = header.logicalIndex(place);
        const bool is_hidden = header.isSectionHidden(section);
        // A hidden section has no width; showing it again gives it back the one that it had.
        const QString width = is_hidden ? QString() : QString::number(header.sectionSize(section));
        columns << QStringLiteral("%1:%2:%3")
                       .arg(QLatin1String(column_info(static_cast<Column>(section)).id), width,
                            is_hidden ? QStringLiteral("hidden") : QStringLiteral("shown"));
    }
    settings.setValue("columns/order", columns);
    const int sorted = header.sortIndicatorSection();
    settings.setValue("columns/sort", sorted < 0
                                          ? QString()
                                          : QString::fromLatin1(column_info(static_cast<Column>(sorted)).id));
    settings.setValue("columns/descending", header.sortIndicatorOrder() == Qt::DescendingOrder);
    settings.sync();
    return settings.status() != QSettings::AccessError;
}

} // namespace vantaro::core
