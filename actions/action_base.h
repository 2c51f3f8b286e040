// What most action kinds have in common: the ActionType that a kind is registered by, and the parts of an
// action that do not differ from kind to kind. A kind with settings declares them, and its dialog, as data:
//
//     class CopyValues final : public ConfiguredAction<CopyValues, 2> {
//     public:
//         static constexpr vantaro::Guid kind = ...;
//         static constexpr const char* menu_name = "Copy values between fields...";
//         enum : std::size_t { source, destination };
//         static constexpr Setting settings[] = {{"from", SettingForm::line}, {"to", SettingForm::line}};
//         static const SettingsDialog dialog;
//
//         void get_description(vantaro::TextSink& out) override;
//         void apply(...) override;
//     };
//     SingleService<TypeOf<CopyValues>, ActionType> copy_values;       // registers the kind
//
// A kind that keeps its notify has a constructor that takes one.
#pragma once

#include "actions/parameter_text.h"
#include "script/action.h"
#include "ui/settings_dialog.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace quorvex {

/// An action that counts tracks over the whole list.
template <class Kind, class Interface = Action>
class ActionBase : public vantaro::HeapService<Interface> {
public:
    vantaro::Guid get_guid() override { return Kind::kind; }
    bool uses_group_key() override { return false; }
    vantaro::Guid get_group_key(vantaro::TrackHandle*) override { return {}; }

protected:
    static vantaro::Ref<Kind> make([[maybe_unused]] vantaro::CompletionNotify& notify) {
        if constexpr (std::is_constructible_v<Kind, vantaro::CompletionNotify&>)
            return vantaro::make_service<Kind>(notify);
        else
            return vantaro::make_service<Kind>();
    }
};

/// An action without settings. It is described by its menu name, and reads back from any parameter text.
template <class Kind>
class SettinglessAction : public ActionBase<Kind> {
public:
    static vantaro::Ref<Action> create(vantaro::CompletionNotify& notify) {
        return ActionBase<Kind>::make(notify);
    }
    static vantaro::Ref<Action> create_from_text(vantaro::CompletionNotify& notify, std::string_view) {
        return create(notify);
    }

    bool has_settings() override { return false; }
    void create_settings_dialog(vantaro::WindowHandle, vantaro::CompletionNotify*) override {}
    void get_description(vantaro::TextSink& out) override { vantaro::set_text(out, Kind::menu_name); }
    void get_parameter_text(vantaro::TextSink& out) override { vantaro::set_text(out, {}); }
};

/// An action with settings.
template <class Kind, std::size_t setting_count, class Interface = Action>
class ConfiguredAction : public ActionBase<Kind, Interface>, public EditableSettings {
public:
    /// A new action, with what its settings start with.
    static vantaro::Ref<Action> create(vantaro::CompletionNotify& notify) {
        static_assert(std::size(Kind::settings) == setting_count);
        auto action = ActionBase<Kind, Interface>::make(notify);
        for (std::size_t i = 0; i < setting_count; ++i) {
            const Setting& setting = Kind::settings[i];
            action->texts_[i] =
                setting.remembered ? text_setting(*setting.remembered).get() : setting.initial;
        }
        return action;
    }
    /// Throws: vantaro_io::exception_io_data when the text is not of the form that the settings have.
    static vantaro::Ref<Action> create_from_text(vantaro::CompletionNotify& notify, std::string_view text) {
        auto action = ActionBase<Kind, Interface>::make(notify);
        action->accept(split_settings(Kind::settings, text));
        return action;
    }

    bool has_settings() override { return true; }
    void create_settings_dialog(vantaro::WindowHandle parent, vantaro::CompletionNotify* done) override {
        open_settings_dialog({*this, *this, Kind::settings, Kind::dialog}, parent, *done);
    }
    /// Settings that are one line lose their line feeds for good: they become "|".
    void get_parameter_text(vantaro::TextSink& out) override {
        replace_line_feeds(Kind::settings, texts_);
        vantaro::set_text(out, join_settings(texts_));
    }
    std::span<const std::string> texts() const override { return texts_; }
    void accept(std::vector<std::string> texts) override {
        std::ranges::move(texts, texts_.begin());
        settings_changed();
    }

protected:
    const std::string& text(std::size_t setting) const { return texts_[setting]; }
    /// Called when all settings have been read or confirmed; not for a new action.
    virtual void settings_changed() {}

private:
    std::array<std::string, setting_count> texts_;
};

template <class Kind>
class TypeOf final : public vantaro::StaticService<ActionType> {
public:
    vantaro::Guid get_guid() override { return Kind::kind; }
    void get_name(vantaro::TextSink& out) override { vantaro::set_text(out, Kind::menu_name); }
    Action* create(vantaro::CompletionNotify* notify) override { return Kind::create(*notify).detach(); }
    Action* create_from_text(vantaro::CompletionNotify* notify, const char* text) override {
        return Kind::create_from_text(*notify, text).detach();
    }
};

} // namespace quorvex
