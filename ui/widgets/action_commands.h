// ActionCommands: what the editor's buttons do to the actions of its script.
//
//     ActionCommands commands(window, actions, refresh, [&] { preview.script_changed(); });
//     commands.edit_selected();
//
// While the settings dialog of an action is open, the window is disabled. Main thread.
#pragma once

#include "script/action.h"
#include "ui/widgets/action_list.h"
#include "ui/widgets/revocable_notify.h"

namespace quorvex {

class ActionCommands {
public:
    /// Everything outlives the object. `refresh` goes to the actions that are added; `changed` is called when
    /// another action is being added.
    ActionCommands(QWidget& window, ActionList& actions, const RevocableNotify& refresh,
                   std::function<void()> changed);

    /// Appends an action of the type, and opens its settings dialog, if it has one.
    void add(ActionType& type, const std::string& name);
    void edit_selected();
    void remove_selected();
    void move_up();
    void move_down();

    /// The action that is being added: it takes no part yet. nullptr for none.
    const Action* added() const { return edit_ && edit_->is_new ? edit_->action.get() : nullptr; }

private:
    struct Edit {
        vantaro::Ref<Action> action;
        bool is_new;
    };

    void edit(std::size_t row, bool is_new);
    void end_edit(std::uint32_t code);

    QWidget& window_;
    ActionList& actions_;
    const RevocableNotify& refresh_;
    const std::function<void()> changed_;
    RevocableNotify edit_notify_;
    std::optional<Edit> edit_;
};

} // namespace quorvex
