// An open editor, as a person sees and uses it.
//
//     editor.add("Remove all fields");
//     EXPECT_EQ(editor.actions(), "*Remove all fields|");
#pragma once

#include "tests/ui/dialog_driver.h"
#include "ui/editor_template.h"

#include <QListWidget>
#include <QMenu>
#include <QTableView>

namespace quorvex::test {

/// One open editor.
class Editor : public Dialog {
public:
    using Dialog::Dialog;

    void click(int id) const { control<QAbstractButton>(id).click(); }
    QListWidget& list() const { return control<QListWidget>(editor_control::action_list); }
    /// The rows of the action list, "|" behind each; the selected one has a star.
    std::string actions() const {
        std::string text;
        for (int row = 0; row < list().count(); ++row)
            text +=
                (list().item(row)->isSelected() ? "*" : "") + list().item(row)->text().toStdString() + '|';
        return text;
    }
    /// A column of the track list, "|" behind each row.
    std::string column(int column) const {
        const QAbstractItemModel* model = control<QTableView>(editor_control::track_list).model();
        std::string text;
        for (int row = 0; row < model->rowCount(); ++row)
            text += model->index(row, column).data().toString().toStdString() + '|';
        return text;
    }
    std::string previews() const { return column(1); }
    /// Picks a kind from the menu of the Add button. Returns the items, "|" behind each.
    std::string add(const std::string& kind) const {
        click(editor_control::add);
        auto* menu = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            throw std::invalid_argument("no menu");
        std::string items;
        QAction* picked = nullptr;
        for (QAction* action : menu->actions()) {
            const std::string name = action->text().remove('&').toStdString();
            items += name + '|';
            if (name == kind)
                picked = action;
        }
        if (picked)
            picked->trigger();
        menu->close();
        return items;
    }
    /// The settings dialog that is open.
    Dialog dialog() const {
        for (QDialog* child : window().findChildren<QDialog*>(Qt::FindDirectChildrenOnly))
            if (child->isVisible())
                return Dialog(child);
        throw std::invalid_argument("no settings dialog");
    }
    void select(int row) const { list().setCurrentRow(row); }
    /// Double-clicks the row.
    void open(int row) const { emit list().itemDoubleClicked(list().item(row)); }
    std::string name_list() const {
        const auto& box = control<QComboBox>(editor_control::script_name);
        std::string text;
        for (int i = 0; i < box.count(); ++i)
            text += box.itemText(i).toStdString() + '|';
        return text;
    }
};

} // namespace quorvex::test
