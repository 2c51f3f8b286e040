// ActionList: the script that is being built, and the list that shows it, one row an action.
//
//     ActionList actions(list_widget, [&] { preview.redraw(); });
//     actions.append(action, "Set value...");
//
// Main thread; the list widget outlives it.
#pragma once

#include "script/action.h"

#include <QListWidget>

#include <functional>
#include <optional>
#include <string>

namespace quorvex {

/// The one line that lists show for an action.
std::string description_of(Action& action);

class ActionList {
public:
    /// `changed` is called after every change of the script. Rows can be moved with the mouse.
    ActionList(QListWidget& list, std::function<void()> changed);

    const Script& script() const { return script_; }
    QListWidget& list() { return list_; }
    std::optional<std::size_t> selected() const;

    /// Adds an action at the end, selects its row and scrolls there.
    void append(vantaro::Ref<Action> action, const std::string& text);
    /// Adds actions at the end, as they describe themselves.
    void append(const Script& actions);
    void remove(std::size_t row);
    void clear();
    /// Moves an action one row up or down, and the selection with it. Requires: both rows exist.
    void move_up(std::size_t row) { exchange_with_next(row - 1, row - 1); }
    void move_down(std::size_t row) { exchange_with_next(row, row + 1); }
    /// The action's settings have changed.
    void refresh(std::size_t row);

private:
    void exchange_with_next(std::size_t row, std::size_t selected);
    void set_text(std::size_t row, const std::string& text);
    void rows_were_moved(int first, int last, int destination);

    QListWidget& list_;
    const std::function<void()> changed_;
    Script script_;
};

} // namespace quorvex
