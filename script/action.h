// Steps of a script. An Action is one configured step; an ActionType is one kind of step, which makes
// actions. Both are open interfaces: a component of anybody's that registers a service of class ActionType
// adds a kind.
//
//     Ref<ActionType> type = find_action_type(kind);
//     Ref<Action> action = Ref<Action>::adopt(type->create_from_text(&notify, "GENRE\nJazz"));
//     action->apply(track, info, 0, 1);
//
// The settings of an action travel only as its parameter text: UTF-8 without NUL bytes, which nobody but its
// kind reads. Pointers passed in are borrowed for the call; who keeps one takes a reference.
// ActionType: any thread. Action: made, described, stored and edited on the main thread; apply and
// get_group_key where the run calls them, one call at a time.
#pragma once

#include "host/api/completion.h"
#include "host/api/host_api.h"
#include "host/api/text_sink.h"
#include "host/api/track.h"

#include <vector>

namespace quorvex {

class Action : public vantaro::ServiceBase {
public:
    static constexpr vantaro::Guid class_guid = vantaro::guid("{ACC7251A-332A-4CD8-912D-693DD854C5DC}");

    /// Whether the kind has a settings dialog.
    virtual bool has_settings() = 0;
    /// Opens the settings dialog, owned by `parent`, and returns. The dialog later calls `notify` of `done`:
    /// 1 when the new settings were accepted and are in the action, 0 when it was cancelled.
    /// Requires: has_settings().
    virtual void create_settings_dialog(vantaro::WindowHandle parent, vantaro::CompletionNotify* done) = 0;
    /// Sets the one line that lists of actions show for this one.
    virtual void get_description(vantaro::TextSink& out) = 0;
    /// Sets the parameter text.
    virtual void get_parameter_text(vantaro::TextSink& out) = 0;
    /// Edits the tags of `track` in `info`, which holds them as the actions before left them. `index` is the
    /// track's position, from 0, among the `total` tracks of the run, or of its group when uses_group_key().
    /// An action that cannot do anything to a track leaves `info` as it is.
    virtual void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
                       std::uint32_t total) = 0;
    /// The GUID of the kind.
    virtual vantaro::Guid get_guid() = 0;
    /// Whether this action counts tracks by group.
    virtual bool uses_group_key() = 0;
    /// The group of a track: neighbours with equal keys stand in one group. All zero for an action that does
    /// not use groups.
    virtual vantaro::Guid get_group_key(vantaro::TrackHandle* track) = 0;

protected:
    ~Action() = default;
};

class ActionType : public vantaro::ServiceBase {
public:
    static constexpr vantaro::Guid class_guid = vantaro::guid("{460B50E0-288E-48AE-B8DD-27B8C1900547}");

    /// The GUID of the kind: what scripts store.
    virtual vantaro::Guid get_guid() = 0;
    /// Sets the name of the kind in menus; names of kinds with settings end in "...".
    virtual void get_name(vantaro::TextSink& out) = 0;
    /// Returns a new action with default settings, with one reference for the caller. `notify` is kept only
    /// by kinds whose result changes by itself; they call it with 0 when it has.
    virtual Action* create(vantaro::CompletionNotify* notify) = 0;
    /// The same with the settings of a parameter text of this kind.
    /// Throws: vantaro_io::exception_io_data when the text is malformed.
    virtual Action* create_from_text(vantaro::CompletionNotify* notify, const char* text) = 0;

protected:
    ~ActionType() = default;
};

/// Actions in the order in which they are carried out. Copies share the actions.
using Script = std::vector<vantaro::Ref<Action>>;

} // namespace quorvex
