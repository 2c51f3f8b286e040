#include "ui/widgets/drop_down_box.h"

#include "host/exception_filter.h"
#include "host/shared/text.h"
#include "ui/dialog_template.h"
#include "ui/widgets/line_edit.h"

#include <QAbstractItemView>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <utility>

namespace quorvex {

DropDownBox::DropDownBox(unsigned flags, QWidget* parent) : QComboBox(parent), flags_(flags) {
    setEditable(true);
    setLineEdit(new LineEdit(flags, this));
    setInsertPolicy(QComboBox::NoInsert);
    // What is typed stays as typed, also where the list has it in other letters.
    setDuplicatesEnabled(true);
    setCompleter(nullptr);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMaxVisibleItems(16);
    lineEdit()->setContextMenuPolicy(Qt::NoContextMenu); // the box has one
    connect(lineEdit(), &QLineEdit::textEdited, this, [this] {
        // What completion inserts counts as an edit too.
        if (!completion_ || std::exchange(is_completing_, true))
            return;
        completion_->complete(!takes_away_);
        is_completing_ = false;
    });
}

void DropDownBox::complete_from(const QStringList& entries) {
    completion_ = std::make_unique<Completion>(*this, entries, (flags_ & control_flag::upper_case) != 0);
}

void DropDownBox::showPopup() {
    QComboBox::showPopup();
    const QModelIndex found = model()->index(find_text(), modelColumn(), rootModelIndex());
    view()->setCurrentIndex(found); // of no entry, where there is none
    if (found.isValid())
        view()->scrollTo(found, QAbstractItemView::PositionAtCenter);
    else
        view()->scrollToTop();
}

void DropDownBox::go_to_text() {
    if (const int found = find_text(); found >= 0 && found != currentIndex())
        setCurrentIndex(found);
}

void DropDownBox::keyPressEvent(QKeyEvent* event) {
    constexpr std::array steps{Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp, Qt::Key_PageDown};
    if (std::ranges::find(steps, event->key()) != steps.end() && !(event->modifiers() & Qt::AltModifier))
        go_to_text();
    takes_away_ = event->key() == Qt::Key_Backspace || event->key() == Qt::Key_Delete
                  || event->matches(QKeySequence::Cut) || event->matches(QKeySequence::Undo);
    QComboBox::keyPressEvent(event);
}

void DropDownBox::wheelEvent(QWheelEvent* event) {
    if (!hasFocus())
        return event->ignore();
    go_to_text();
    QComboBox::wheelEvent(event);
}

void DropDownBox::contextMenuEvent(QContextMenuEvent* event) {
    if (!history_)
        return QComboBox::contextMenuEvent(event);
    const bool has_place = event->reason() == QContextMenuEvent::Mouse;
    guarded(
        [&] { show_menu(*this, *history_, has_place ? std::optional(event->globalPos()) : std::nullopt); });
}

void DropDownBox::set_entries(const std::vector<std::string>& entries) {
    std::vector<std::string> sorted = entries;
    if (flags_ & control_flag::sorted)
        std::ranges::stable_sort(sorted, [](const std::string& a, const std::string& b) {
            return compare_alphabetical(a, b) < 0;
        });
    QStringList list;
    for (const std::string& entry : sorted)
        list.append(QString::fromStdString(entry));
    const QString text = currentText();
    const int cursor = lineEdit()->cursorPosition();
    clear();
    addItems(list);
    setCurrentIndex(-1);
    setEditText(text);
    lineEdit()->setCursorPosition(cursor);
}

void attach(DropDownBox& box, const DropDownHistory& history, const std::string& initial) {
    box.set_history(history);
    history.add(initial);
    box.set_entries(history.entries());
    box.setEditText(QString::fromStdString(initial));
}

void attach_with_completion(DropDownBox& box, const std::string& initial) {
    attach(box, field_name_history, initial);
    QStringList names;
    for (const std::string& name : field_name_history.entries())
        names.append(QString::fromStdString(name));
    box.complete_from(names);
}

bool show_menu(DropDownBox& box, const DropDownHistory& history, std::optional<QPoint> where) {
    const std::string text = box.currentText().toStdString();
    QMenu menu;
    const QAction* wipe = menu.addAction("Wipe history");
    const QAction* remove = text.empty() ? nullptr : menu.addAction("Remove this history item");
    const QPointer<DropDownBox> guard(&box);
    const QAction* chosen = menu.exec(where.value_or(box.mapToGlobal(box.rect().center())));
    if (!guard || !chosen)
        return false;
    const bool has_changed = chosen != remove || history.remove(text);
    if (chosen == wipe)
        history.wipe();
    box.set_entries(history.entries());
    return has_changed;
}

} // namespace quorvex
