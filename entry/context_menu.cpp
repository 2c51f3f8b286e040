#include "entry/context_menu.h"

#include "component/configuration.h"
#include "engine/run.h"
#include "host/access.h"
#include "host/api/exceptions.h"
#include "host/api/system.h"
#include "host/modal_dialog.h"
#include "script/script_library.h"

#include <limits>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr const char* default_path = "Tagging";
constexpr const char* scripts_name = "Scripts";
constexpr const char* manage_name = "Manage scripts";
constexpr const char* manage_description = "Performs advanced tag editing operations on specified items.";

EditorOpener* open_editor = nullptr;

TrackList track_list(TrackHandle* const* tracks, std::size_t count) {
    TrackList list;
    list.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        list.emplace_back(tracks[i]);
    return list;
}

Guid command_guid(const std::string& script_name) {
    const auto digest = Ref<DigestState>::adopt(required_service<DigestService>()->initialise());
    digest->process(script_name.data(), script_name.size());
    return digest->result();
}

void run_quick_command(const StoredScript& script, TrackHandle* const* tracks, std::size_t count) {
    if (confirm_quick_command(count))
        run_stored_script(script, track_list(tracks, count), host()->main_window(), nullptr);
}

/// The node of an item that is a single command.
class CommandNode final : public HeapService<ContextMenuNode> {
public:
    explicit CommandNode(ContextMenuItem& item) : item_(item) {}

    bool get_display(TextSink& name, std::uint32_t& flags) override {
        item_.get_item_name(0, name);
        flags = 0;
        return true;
    }
    bool get_description(TextSink& out) override { return item_.get_item_description(0, out); }
    Guid get_guid() override { return {}; }
    std::size_t child_count() override { return 0; }
    ContextMenuNode* child(std::size_t) override { return nullptr; }
    void execute(TrackHandle* const* tracks, std::size_t count) override {
        item_.execute(0, {}, tracks, count, {});
    }

private:
    ContextMenuItem& item_;
};

/// Runs its copy of a script, whatever becomes of the saved one while the menu is open.
class ScriptNode final : public HeapService<ContextMenuNode> {
public:
    explicit ScriptNode(StoredScript script)
        : script_(std::move(script)), guid_(command_guid(script_.name)) {}

    bool get_display(TextSink& name, std::uint32_t& flags) override {
        set_text(name, script_.name);
        flags = 0;
        return true;
    }
    bool get_description(TextSink& out) override {
        set_text(out, "Runs a tag editing script : \"" + script_.name + '"');
        return true;
    }
    Guid get_guid() override { return guid_; }
    std::size_t child_count() override { return 0; }
    ContextMenuNode* child(std::size_t) override { return nullptr; }
    void execute(TrackHandle* const* tracks, std::size_t count) override {
        run_quick_command(script_, tracks, count);
    }

private:
    const StoredScript script_;
    const Guid guid_;
};

class ScriptsNode final : public HeapService<ContextMenuNode> {
public:
    explicit ScriptsNode(bool filled) {
        if (filled)
            for (const StoredScript& script : script_library().scripts())
                children_.push_back(make_service<ScriptNode>(script));
    }

    bool get_display(TextSink& name, std::uint32_t& flags) override {
        set_text(name, scripts_name);
        flags = 0;
        return !children_.empty();
    }
    bool get_description(TextSink& out) override {
        set_text(out, "Runs a tag editor script.");
        return true;
    }
    Guid get_guid() override { return {}; }
    std::size_t child_count() override { return children_.size(); }
    ContextMenuNode* child(std::size_t index) override {
        return Ref<ContextMenuNode>(children_[index]).detach();
    }
    void execute(TrackHandle* const*, std::size_t) override {}

private:
    std::vector<Ref<ScriptNode>> children_;
};

} // namespace

void set_editor_opener(EditorOpener* opener) {
    open_editor = opener;
}

void ManageScripts::get_item_name(std::size_t, TextSink& out) {
    set_text(out, manage_name);
}

void ManageScripts::get_default_path(std::size_t, TextSink& out) {
    set_text(out, default_path);
}

bool ManageScripts::get_item_description(std::size_t, TextSink& out) {
    set_text(out, manage_description);
    return true;
}

ContextMenuNode* ManageScripts::create_node(std::size_t, TrackHandle* const*, std::size_t, const Guid&) {
    return make_service<CommandNode>(*this).detach();
}

void ManageScripts::execute(std::size_t index, const Guid&, TrackHandle* const* tracks, std::size_t count,
                            const Guid&) {
    if (count == 0 || !may_run_on_this_thread() || index != 0)
        return;
    try {
        if (open_editor)
            return open_editor(track_list(tracks, count), host()->main_window());
    } catch (const exception_win32&) {
        // No display.
    }
    print_to_console("The script editor needs a window.");
    note_undone_work("");
}

void SavedScripts::get_item_name(std::size_t, TextSink& out) {
    set_text(out, scripts_name);
}

void SavedScripts::get_default_path(std::size_t, TextSink& out) {
    set_text(out, default_path);
}

ContextMenuNode* SavedScripts::create_node(std::size_t, TrackHandle* const*, std::size_t count,
                                           const Guid& caller) {
    if (!may_run_on_this_thread())
        return nullptr;
    return make_service<ScriptsNode>(count > 0 || caller == menu_caller::command_list).detach();
}

void SavedScripts::execute(std::size_t, const Guid& node, TrackHandle* const* tracks, std::size_t count,
                           const Guid&) {
    if (!may_run_on_this_thread())
        return;
    for (const StoredScript& script : script_library().scripts())
        if (command_guid(script.name) == node)
            // As it is now: while the question is open, the library may change.
            return run_quick_command(StoredScript(script), tracks, count);
}

bool confirm_quick_command(std::size_t track_count) {
    if (track_count == 0)
        return false;
    const auto& threshold =
        static_cast<ConfigUint64&>(configuration_variable(setting::quick_command_threshold)).get().front();
    if (threshold > std::numeric_limits<std::uint32_t>::max() || track_count <= threshold)
        return true;
    if (!ModalDialog_CanCreateNew()) {
        ModalDialog_PokeExisting();
        return false;
    }
    const std::string message = "You're about to update tags of " + std::to_string(track_count) + " track"
                                + (track_count >= 2 ? "s" : "") + ". Continue?";
    PopupQuestion::Request question;
    question.title = "Warning";
    question.message = message.c_str();
    question.buttons = button::yes | button::no;
    question.default_button = button::yes;
    question.icon = popup_icon::warning;
    question.parent = host()->main_window();
    const std::uint32_t answer = required_service<PopupQuestion>()->ask(question);
    return (answer & (~answer + 1)) == button::yes; // the lowest bit is the answer
}

} // namespace quorvex
