#include "ui/widgets/action_commands.h"

#include <algorithm>

namespace quorvex {

using namespace vantaro;

ActionCommands::ActionCommands(QWidget& window, ActionList& actions, const RevocableNotify& refresh,
                               std::function<void()> changed)
    : window_(window), actions_(actions), refresh_(refresh), changed_(std::move(changed)) {}

void ActionCommands::add(ActionType& type, const std::string& name) {
    const auto action = Ref<Action>::adopt(type.create(refresh_.get()));
    actions_.append(action, action->has_settings() ? name : description_of(*action));
    edit(actions_.script().size() - 1, true);
}

void ActionCommands::edit_selected() {
    if (const auto row = actions_.selected())
        edit(*row, false);
}

void ActionCommands::edit(std::size_t row, bool is_new) {
    const Script& script = actions_.script();
    if (edit_ || row >= script.size() || !script[row]->has_settings())
        return;
    const Ref<Action> action = script[row];
    edit_ = Edit{action, is_new};
    window_.setEnabled(false);
    edit_notify_.renew([this](std::uint32_t code) { end_edit(code); });
    changed_();
    try {
        action->create_settings_dialog(&window_, edit_notify_.get());
    } catch (...) {
        end_edit(0);
        throw;
    }
}

void ActionCommands::end_edit(std::uint32_t code) {
    const std::optional<Edit> ended = std::exchange(edit_, std::nullopt);
    if (!ended)
        return;
    window_.setEnabled(true);
    const Script& script = actions_.script();
    const auto found = std::ranges::find(script, ended->action);
    if (found == script.end())
        return;
    const auto row = static_cast<std::size_t>(found - script.begin());
    if (code == 1)
        actions_.refresh(row);
    else if (ended->is_new)
        actions_.remove(row);
    actions_.list().setFocus();
}

void ActionCommands::remove_selected() {
    if (const auto row = actions_.selected())
        actions_.remove(*row);
}

void ActionCommands::move_up() {
    if (const auto row = actions_.selected(); row && *row > 0)
        actions_.move_up(*row);
}

void ActionCommands::move_down() {
    if (const auto row = actions_.selected(); row && *row + 1 < actions_.script().size())
        actions_.move_down(*row);
}

} // namespace quorvex
