// The settings dialog of an action kind, as data that the kind declares, and the way to open it.
//
//     constexpr SettingControl bound[] = {
//         {1024, field_name, a_field_name, &field_name_history},
//         {1023, separator, not_empty("Please enter a separator string.")},
//     };
//     constinit const SettingsDialog SplitField::dialog{{129, "Split field by separator", 252, 76, controls},
//     bound};
//
// Windows need a widget library, which actions do not link: who has one hands the opener over when the
// component starts.
//
// Main thread only.
#pragma once

#include "host/api/completion.h"
#include "script/action.h"
#include "ui/dialog_template.h"
#include "ui/history.h"
#include "ui/pattern_sample.h"
#include "ui/setting.h"

#include <optional>

namespace quorvex {

/// What must hold for the text of a control before anything is stored.
struct InputCheck {
    /// Nothing need hold without one.
    bool (*accepts)(std::string_view text) = nullptr;
    /// What the person is told otherwise.
    const char* message = "";
    /// What it accepts, for people who write scripts by hand.
    const char* allowed = "any text";
};

bool is_not_empty(std::string_view text);
bool is_field_name(std::string_view text);

constexpr InputCheck not_empty(const char* message) {
    return {is_not_empty, message, "a text that is not empty"};
}
inline constexpr InputCheck any_text;
inline constexpr InputCheck a_field_name{is_field_name, "Please enter a valid field name.",
                                         "ASCII characters without = % < >"};
inline constexpr InputCheck a_pattern = not_empty("Please enter a pattern.");

/// The control that holds a setting.
struct SettingControl {
    std::uint16_t id;
    /// Position of the setting. A case flag is held by a check box.
    std::size_t setting;
    InputCheck check = any_text;
    /// For drop-down boxes: what the box offers, and where its text goes on OK.
    const DropDownHistory* history = nullptr;
    /// For boxes with a pattern: says what the pattern gives while it is being typed.
    PatternTrial* trial = nullptr;
};

struct SettingsDialog {
    DialogTemplate window;
    /// In the order in which they are checked, and go to their histories.
    std::span<const SettingControl> controls;
};

/// What a dialog is opened for. The action lives as long as the dialog does, and `settings` is a part of it;
/// the rest lives as long as the component.
struct SettingsRequest {
    Action& action;
    EditableSettings& settings;
    std::span<const Setting> rows;
    const SettingsDialog& dialog;
};

/// The first control whose text is rejected; nullptr when all may be stored. `texts`: one text a setting.
const SettingControl* first_rejected(const SettingsDialog& dialog, std::span<const std::string> texts);
/// The first setting with which something is wrong, for scripts that were not made in dialogs: what a dialog
/// would not store, or says of a pattern while it is being typed. `texts` as above.
struct SettingFault {
    std::size_t setting;
    std::string message;
    /// What the setting may be; empty where the message says it.
    std::string_view allowed;
};
std::optional<SettingFault> first_fault(const SettingsDialog& dialog, std::span<const std::string> texts);
/// Puts confirmed texts into the histories, the variables that remember them, and the action.
void store_settings(const SettingsRequest& request, std::vector<std::string> texts);

/// Opens the dialog as Action::create_settings_dialog promises.
using SettingsDialogOpener = void(const SettingsRequest& request, vantaro::WindowHandle parent,
                                  vantaro::CompletionNotify& done);

void set_settings_dialog_opener(SettingsDialogOpener* opener);

/// Opens the dialog; without an opener there are no dialogs, and it counts as cancelled at once.
void open_settings_dialog(const SettingsRequest& request, vantaro::WindowHandle parent,
                          vantaro::CompletionNotify& done);

} // namespace quorvex
