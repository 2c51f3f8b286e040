#include "vantaro/windows/update_report_window.h"

#include "vantaro/windows/shown_text.h"

#include <QAbstractTableModel>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace vantaro::core {

namespace {

enum Column { file_column, reason_column };

/// Makes the texts of a row when it is looked at.
class FailedFiles final : public QAbstractTableModel {
public:
    FailedFiles(std::vector<FailedFile> files, QObject* parent)
        : QAbstractTableModel(parent), files_(std::move(files)) {}

    const std::vector<FailedFile>& files() const { return files_; }

    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(files_.size());
    }
    int columnCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : 2; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
            return {};
        const FailedFile& file = files_[static_cast<std::size_t>(index.row())];
        return shown_text(index.column() == file_column ? file.path : file.reason);
    }
    QVariant headerData(int section, Qt::Orientation, int role) const override {
        if (role != Qt::DisplayRole)
            return {};
        return section == file_column ? "File" : "Reason";
    }

private:
    const std::vector<FailedFile> files_;
};

void copy_all(const QString& summary, const std::vector<FailedFile>& files) {
    QString text = summary + '\n';
    for (const FailedFile& file : files)
        text += shown_text(file.path) + '\t' + shown_text(file.reason) + '\n';
    QGuiApplication::clipboard()->setText(text);
}

QTreeView* make_list(FailedFiles& files, QWidget* window) {
    auto* list = new QTreeView(window);
    list->setAccessibleName("Files that failed");
    list->setModel(&files);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true); // only the rows in sight are measured
    list->setAlternatingRowColors(true);
    list->setTextElideMode(Qt::ElideMiddle);
    return list;
}

} // namespace

std::string update_summary(const UpdateReport& report, const std::string& done) {
    const std::string of_total =
        " of " + std::to_string(report.total) + (report.total == 1 ? " file" : " files");
    std::string text;
    const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    if (report.written > 0)
        add(std::to_string(report.written) + of_total + ' ' + done);
    if (report.written > 0 && report.unchanged > 0)
        add(std::to_string(report.unchanged) + " unchanged");
    if (report.failed > 0 || text.empty())
        add(std::to_string(report.failed) + (text.empty() ? of_total : "") + " failed");
    if (report.aborted)
        add(std::to_string(report.total - report.written - report.unchanged - report.failed)
            + " not touched, because it was cancelled");
    return text;
}

void show_update_report(const UpdateReport& report, const std::string& done, std::vector<FailedFile> failed,
                        QWidget* parent) {
    auto* window = new QDialog(parent); // deletes itself
    window->setAttribute(Qt::WA_DeleteOnClose);
    const bool has_failures = !failed.empty();
    window->setWindowTitle(has_failures ? "Files That Failed" : "Problem After Updating");
    const QString summary = shown_text(update_summary(report, done));

    auto* icon = new QLabel(window);
    const int icon_size = window->style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    icon->setPixmap(window->style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(icon_size));
    icon->setAlignment(Qt::AlignTop);
    auto* said = new QLabel(window);
    said->setTextFormat(Qt::PlainText);
    said->setWordWrap(true);
    said->setTextInteractionFlags(Qt::TextSelectableByMouse);
    said->setText(report.problem.empty() ? summary + '.' : summary + ".\n" + shown_text(report.problem));
    auto* top = new QHBoxLayout;
    top->addWidget(icon);
    top->addWidget(said, 1);
    top->setSpacing(12);

    auto* files = new FailedFiles(std::move(failed), window);
    auto* layout = new QVBoxLayout(window);
    layout->addLayout(top);
    const QFontMetrics metrics = window->fontMetrics();
    const int width = 120 * metrics.averageCharWidth();
    if (has_failures) {
        QTreeView* list = make_list(*files, window);
        list->header()->resizeSection(file_column, width / 2);
        layout->addWidget(list, 1);
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, window);
    QPushButton* copy = buttons->addButton("Copy &all", QDialogButtonBox::ActionRole);
    copy->setAutoDefault(false);
    QObject::connect(copy, &QPushButton::clicked, window,
                     [files, text = said->text()] { copy_all(text, files->files()); });
    QObject::connect(buttons, &QDialogButtonBox::rejected, window, [window] { window->close(); });
    layout->addWidget(buttons);
    said->setMinimumWidth(50 * metrics.averageCharWidth());
    if (has_failures)
        window->resize(width, (10 + std::min(files->rowCount({}), 12)) * metrics.lineSpacing() * 5 / 4);
    window->show();
}

} // namespace vantaro::core
