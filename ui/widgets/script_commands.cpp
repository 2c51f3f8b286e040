#include "ui/widgets/script_commands.h"

#include "host/access.h"
#include "host/filesystem_access.h"
#include "host/modal_dialog.h"
#include "host/shared/text.h"
#include "script/action_registry.h"
#include "script/script_library.h"
#include "script/script_stream.h"
#include "ui/widgets/file_dialog.h"

namespace quorvex {

using namespace vantaro;

namespace {

constexpr const char* incomplete = "Some parts of the script failed to load.";

/// Returns whether the person has pressed the button that stands first in `buttons` and is the default.
bool confirm(QWidget& window, const char* message, std::uint32_t buttons, std::uint32_t wanted) {
    PopupQuestion::Request question;
    question.title = "Warning";
    question.message = message;
    question.buttons = buttons;
    question.default_button = wanted;
    question.icon = popup_icon::warning;
    question.parent = &window;
    return required_service<PopupQuestion>()->ask(question) == wanted;
}

void show_error(const std::string& message) {
    required_service<PopupMessage>()->show(message.data(), message.size(), "Error", popup_icon::error);
}

} // namespace

ScriptCommands::ScriptCommands(QWidget& window, ActionList& actions, DropDownBox& name_box,
                               ValidationTip& tip, const RevocableNotify& refresh)
    : window_(window), actions_(actions), name_box_(name_box), tip_(tip), refresh_(refresh) {}

void ScriptCommands::open() {
    std::vector<std::string> names;
    for (const StoredScript& script : script_library().scripts())
        names.push_back(script.name);
    name_box_.set_entries(names);
    if (const auto last = script_library().find_script(last_used_script)) {
        take(script_library().scripts()[*last], Add::behind);
        name_box_.setEditText(QString::fromUtf8(last_used_script.data(), last_used_script.size()));
    }
}

void ScriptCommands::store_last_used() {
    const std::string name(last_used_script);
    if (script_library().store_script(name, actions_.script()) && find_in_box(name) < 0)
        add_to_box(name);
}

void ScriptCommands::refuse(const char* message) {
    tip_.show(message, name_box_);
    name_box_.setFocus(Qt::OtherFocusReason);
}

std::optional<std::size_t> ScriptCommands::named_script() {
    const std::string name = name_box_.currentText().toStdString();
    if (name.empty()) {
        refuse("Please enter script name.");
        return std::nullopt;
    }
    const auto found = script_library().find_script(name);
    if (!found)
        refuse("Script of this name doesn't exist.");
    return found;
}

void ScriptCommands::save() {
    const std::string name = name_box_.currentText().toStdString();
    if (name.empty())
        return refuse("Please enter script name.");
    const QPointer<QWidget> guard(&window_);
    if (script_library().find_script(name)
        && !confirm(window_, "Script of this name already exists. Overwrite ?", button::yes | button::no,
                    button::yes))
        return;
    if (guard && script_library().store_script(name, actions_.script()))
        add_to_box(name);
}

void ScriptCommands::load() {
    load_named(Add::instead);
}

void ScriptCommands::append() {
    load_named(Add::behind);
}

void ScriptCommands::load_named(Add add) {
    if (const auto found = named_script())
        take_or_warn(StoredScript(script_library().scripts()[*found]), add);
}

bool ScriptCommands::take(const StoredScript& stored, Add add) {
    if (add == Add::instead)
        actions_.clear();
    Script loaded;
    const bool is_complete = load_script(stored, loaded, *refresh_.get());
    actions_.append(loaded);
    return is_complete;
}

void ScriptCommands::take_or_warn(const StoredScript& stored, Add add) {
    if (!take(stored, add))
        uMessageBox(&window_, incomplete, "Warning", button::ok);
}

void ScriptCommands::delete_script() {
    const auto found = named_script();
    if (!found)
        return;
    const std::string name = name_box_.currentText().toStdString();
    script_library().delete_script(*found);
    if (const int item = find_in_box(name); item >= 0)
        name_box_.removeItem(item);
    name_box_.setCurrentIndex(-1);
    name_box_.clearEditText();
}

void ScriptCommands::add_to_box(const std::string& name) {
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(name_box_.count()) + 1);
    for (int i = 0; i < name_box_.count(); ++i)
        names.push_back(name_box_.itemText(i).toStdString());
    names.push_back(name);
    name_box_.set_entries(names);
}

int ScriptCommands::find_in_box(const std::string& name) const {
    for (int i = 0; i < name_box_.count(); ++i)
        if (stricmp_utf8(name_box_.itemText(i).toStdString().c_str(), name.c_str()) == 0)
            return i;
    return -1;
}

void ScriptCommands::clear() {
    if (actions_.script().empty())
        return;
    if (!ModalDialog_CanCreateNew())
        return ModalDialog_PokeExisting();
    const QPointer<QWidget> guard(&window_);
    if (confirm(window_, "Clear all actions ?", button::ok | button::cancel, button::ok) && guard)
        actions_.clear();
}

void ScriptCommands::export_to_file() {
    const QPointer<QWidget> guard(&window_);
    const std::optional<std::string> path = uGetOpenFileName(window_, FileDialog::save, "Export script");
    if (!path || !guard)
        return;
    try {
        NeverAbort abort;
        write_script_file(path->c_str(), store_actions({}, actions_.script()), abort);
    } catch (const std::exception& failure) {
        show_error(std::string("Error writing quorvex script (") + failure.what() + ").");
    }
}

void ScriptCommands::import_from_file() {
    load_from_file(Add::instead);
}

void ScriptCommands::append_from_file() {
    load_from_file(Add::behind);
}

void ScriptCommands::load_from_file(Add add) {
    const QPointer<QWidget> guard(&window_);
    const char* title = add == Add::instead ? "Import script" : "Append script";
    const std::optional<std::string> path = uGetOpenFileName(window_, FileDialog::open, title);
    if (path && guard)
        load_file(*path, add);
}

void ScriptCommands::import_file(const std::string& path) {
    load_file(path, Add::instead);
}

void ScriptCommands::load_file(const std::string& path, Add add) {
    try {
        NeverAbort abort;
        take_or_warn(read_script_file(path.c_str(), abort), add);
    } catch (const std::exception& failure) {
        show_error(std::string("Error loading quorvex script (") + failure.what() + ").");
    }
}

} // namespace quorvex
