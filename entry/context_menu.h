// The component's items in the context menu of selected tracks: "Tagging" > "Manage scripts" opens the
// editor, "Tagging" > "Scripts" has one command for every saved script.
//
// Main thread only; a command called elsewhere does nothing.
#pragma once

#include "engine/run_index.h"
#include "host/api/registered_services.h"

namespace quorvex {

/// Opens the editor for the tracks, owned by `owner`.
using EditorOpener = void(const TrackList& tracks, vantaro::WindowHandle owner);

/// The editor needs a widget library: who has one hands the opener over when the component starts. Without
/// one, the command says on the console that there is no editor.
void set_editor_opener(EditorOpener* opener);

class ManageScripts final : public vantaro::StaticService<vantaro::ContextMenuItem> {
public:
    static constexpr vantaro::Guid command = vantaro::guid("{2BEB6836-C657-40EF-BB6E-D5B222AB89CE}");

    std::size_t command_count() override { return 1; }
    void get_item_name(std::size_t command, vantaro::TextSink& out) override;
    void get_default_path(std::size_t command, vantaro::TextSink& out) override;
    vantaro::Guid get_item_guid(std::size_t) override { return command; }
    bool get_item_description(std::size_t command, vantaro::TextSink& out) override;
    vantaro::ContextMenuNode* create_node(std::size_t command, vantaro::TrackHandle* const* tracks,
                                          std::size_t count, const vantaro::Guid& caller) override;
    void execute(std::size_t command, const vantaro::Guid& node, vantaro::TrackHandle* const* tracks,
                 std::size_t count, const vantaro::Guid& caller) override;
};

/// Runs saved scripts. The GUID of a script's command is the digest of the script's name.
class SavedScripts final : public vantaro::StaticService<vantaro::ContextMenuItem> {
public:
    static constexpr vantaro::Guid item = vantaro::guid("{E1DACD5C-534E-4E3B-94FC-00D5D2E6F9E7}");

    std::size_t command_count() override { return 1; }
    void get_item_name(std::size_t command, vantaro::TextSink& out) override;
    void get_default_path(std::size_t command, vantaro::TextSink& out) override;
    vantaro::Guid get_item_guid(std::size_t) override { return item; }
    bool get_item_description(std::size_t, vantaro::TextSink&) override { return false; }
    vantaro::ContextMenuNode* create_node(std::size_t command, vantaro::TrackHandle* const* tracks,
                                          std::size_t count, const vantaro::Guid& caller) override;
    void execute(std::size_t command, const vantaro::Guid& node, vantaro::TrackHandle* const* tracks,
                 std::size_t count, const vantaro::Guid& caller) override;
};

/// Whether a saved script may be run on so many tracks: above the threshold of the preferences the person is
/// asked.
bool confirm_quick_command(std::size_t track_count);

} // namespace quorvex
