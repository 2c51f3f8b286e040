// What most action kinds have in common: the ActionType that a kind is registered by, and the parts of an
// action that do not differ from kind to kind.
//
//     class CopyValues final : public ActionBase<CopyValues> {
//     public:
//         static constexpr vantaro::Guid kind = ...;
//         static constexpr const char* menu_name = "Copy values between fields...";
//         static vantaro::Ref<Action> create();
//         static vantaro::Ref<Action> create_from_text(std::string_view text);
//         ...
//     };
//     SingleService<TypeOf<CopyValues>, ActionType> copy_values;       // registers the kind
//
// A kind that keeps its notify takes a CompletionNotify& before these parameters.
#pragma once

#include "actions/settings_dialog.h"
#include "script/action.h"

#include <string_view>

namespace quorvex {

/// An action with settings that counts tracks over the whole list.
template <class Kind, class Interface = Action>
class ActionBase : public vantaro::HeapService<Interface> {
public:
    bool has_settings() override { return true; }
    void create_settings_dialog(vantaro::WindowHandle parent, vantaro::CompletionNotify* done) override {
        open_settings_dialog(*this, parent, *done);
    }
    vantaro::Guid get_guid() override { return Kind::kind; }
    bool uses_group_key() override { return false; }
    vantaro::Guid get_group_key(vantaro::TrackHandle*) override { return {}; }
};

/// An action without settings. It is described by its menu name, and reads back from any parameter text.
template <class Kind>
class SettinglessAction : public ActionBase<Kind> {
public:
    static vantaro::Ref<Action> create() { return vantaro::make_service<Kind>(); }
    static vantaro::Ref<Action> create_from_text(std::string_view) { return create(); }

    bool has_settings() override { return false; }
    void create_settings_dialog(vantaro::WindowHandle, vantaro::CompletionNotify*) override {}
    void get_description(vantaro::TextSink& out) override { vantaro::set_text(out, Kind::menu_name); }
    void get_parameter_text(vantaro::TextSink& out) override { vantaro::set_text(out, {}); }
};

template <class Kind>
class TypeOf final : public vantaro::StaticService<ActionType> {
public:
    vantaro::Guid get_guid() override { return Kind::kind; }
    void get_name(vantaro::TextSink& out) override { vantaro::set_text(out, Kind::menu_name); }
    Action* create(vantaro::CompletionNotify* notify) override {
        if constexpr (requires { Kind::create(*notify); })
            return Kind::create(*notify).detach();
        else
            return Kind::create().detach();
    }
    Action* create_from_text(vantaro::CompletionNotify* notify, const char* text) override {
        if constexpr (requires { Kind::create_from_text(*notify, text); })
            return Kind::create_from_text(*notify, text).detach();
        else
            return Kind::create_from_text(text).detach();
    }
};

} // namespace quorvex
