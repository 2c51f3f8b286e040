#include "ui/widgets/file_dialog.h"

#include <QFile>
#include <QFileDialog>
#include <QPointer>

namespace quorvex {

std::optional<std::string> uGetOpenFileName(QWidget& parent, FileDialog mode, const char* title) {
    const QPointer<QFileDialog> dialog(new QFileDialog(&parent, QString::fromUtf8(title)));
    // The dialogs of some desktops take patterns by the letter.
    dialog->setNameFilter("Quorvex scripts (*.qvx *.[qQ][vV][xX])");
    dialog->setOption(QFileDialog::HideNameFilterDetails);
    dialog->setDefaultSuffix("qvx");
    dialog->setAcceptMode(mode == FileDialog::save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog->setFileMode(mode == FileDialog::save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    const bool is_accepted = dialog->exec() == QDialog::Accepted;
    std::optional<std::string> path;
    if (dialog && is_accepted && !dialog->selectedFiles().isEmpty())
        path = QFile::encodeName(dialog->selectedFiles().front()).toStdString();
    delete dialog;
    return path;
}

} // namespace quorvex
