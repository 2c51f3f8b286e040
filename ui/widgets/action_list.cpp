#include "ui/widgets/action_list.h"

#include "host/api/text_sink.h"
#include "ui/widgets/tool_tip.h"

#include <algorithm>
#include <iterator>

namespace quorvex {

using namespace vantaro;

std::string description_of(Action& action) {
    return text_of([&](TextSink& out) { action.get_description(out); });
}

ActionList::ActionList(QListWidget& list, std::function<void()> changed)
    : list_(list), changed_(std::move(changed)) {
    list.setSelectionMode(QAbstractItemView::SingleSelection);
    list.setDragDropMode(QAbstractItemView::InternalMove);
    list.setUniformItemSizes(true);
    list.setAccessibleName("Actions to perform");
    QObject::connect(list.model(), &QAbstractItemModel::rowsMoved, &list,
                     [this](const QModelIndex&, int first, int last, const QModelIndex&, int destination) {
                         rows_were_moved(first, last, destination);
                     });
}

std::optional<std::size_t> ActionList::selected() const {
    const QList<QListWidgetItem*> items = list_.selectedItems();
    if (items.isEmpty())
        return std::nullopt;
    return static_cast<std::size_t>(list_.row(items.front()));
}

void ActionList::append(Ref<Action> action, const std::string& text) {
    script_.push_back(std::move(action));
    list_.addItem(QString());
    set_text(script_.size() - 1, text);
    list_.setCurrentRow(list_.count() - 1);
    list_.scrollToItem(list_.currentItem());
    changed_();
}

void ActionList::append(const Script& actions) {
    for (const Ref<Action>& action : actions) {
        script_.push_back(action);
        list_.addItem(QString());
        set_text(script_.size() - 1, description_of(*action));
    }
    changed_();
}

void ActionList::remove(std::size_t row) {
    script_.erase(std::next(script_.begin(), static_cast<std::ptrdiff_t>(row)));
    delete list_.takeItem(static_cast<int>(row));
    changed_();
}

void ActionList::clear() {
    script_.clear();
    list_.clear();
    changed_();
}

void ActionList::exchange_with_next(std::size_t row, std::size_t selected) {
    std::swap(script_[row], script_[row + 1]);
    set_text(row, description_of(*script_[row]));
    set_text(row + 1, description_of(*script_[row + 1]));
    list_.setCurrentRow(static_cast<int>(selected));
    changed_();
}

void ActionList::refresh(std::size_t row) {
    set_text(row, description_of(*script_[row]));
    changed_();
}

void ActionList::set_text(std::size_t row, const std::string& text) {
    QListWidgetItem* item = list_.item(static_cast<int>(row));
    item->setText(QString::fromStdString(text));
    item->setToolTip(plain_tool_tip(item->text()));
}

/// `destination` is the row, before the move, in front of which the moved ones now stand.
void ActionList::rows_were_moved(int first, int last, int destination) {
    const auto at = [&](int row) { return std::next(script_.begin(), row); };
    if (destination > last)
        std::rotate(at(first), at(last + 1), at(destination));
    else
        std::rotate(at(destination), at(first), at(last + 1));
    changed_();
}

} // namespace quorvex
