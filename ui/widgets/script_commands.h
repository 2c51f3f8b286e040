// ScriptCommands: what the editor's Scripts group does: saving, loading and deleting named scripts, and
// script files.
//
//     ScriptCommands commands(window, actions, name_box, tip, refresh);
//     commands.save();
//
// Main thread. The window may be closed while a command waits for an answer.
#pragma once

#include "script/stored_script.h"
#include "ui/widgets/action_list.h"
#include "ui/widgets/drop_down_box.h"
#include "ui/widgets/revocable_notify.h"
#include "ui/widgets/validation_tip.h"

#include <QPointer>

namespace quorvex {

class ScriptCommands {
public:
    /// Everything outlives the object. `refresh` goes to the actions that are loaded.
    ScriptCommands(QWidget& window, ActionList& actions, DropDownBox& name_box, ValidationTip& tip,
                   const RevocableNotify& refresh);

    /// Lists the saved scripts, and loads the one last run, if there is one.
    void open();
    /// Keeps the script as the one last run.
    void store_last_used();

    void save();
    void load();
    void append();
    void delete_script();
    void clear();
    void export_to_file();
    void import_from_file();
    void append_from_file();
    /// Replaces the script by that of a file.
    void import_file(const std::string& path);

private:
    enum class Add { instead, behind };

    /// The script that the box names; nothing, and a message at the box, when there is none.
    std::optional<std::size_t> named_script();
    void refuse(const char* message);
    void load_named(Add add);
    void load_from_file(Add add);
    void load_file(const std::string& path, Add add);
    /// Returns whether every action could be loaded.
    bool take(const StoredScript& stored, Add add);
    void take_or_warn(const StoredScript& stored, Add add);
    /// The list of the box keeps its order.
    void add_to_box(const std::string& name);
    int find_in_box(const std::string& name) const;

    QWidget& window_;
    ActionList& actions_;
    DropDownBox& name_box_;
    ValidationTip& tip_;
    const RevocableNotify& refresh_;
};

} // namespace quorvex
