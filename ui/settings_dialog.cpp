#include "ui/settings_dialog.h"

#include "script/field_name.h"

namespace quorvex {

namespace {

SettingsDialogOpener* current_opener = nullptr;

} // namespace

bool is_not_empty(std::string_view text) {
    return !text.empty();
}

bool is_field_name(std::string_view text) {
    return is_valid_field_name(text);
}

const SettingControl* first_rejected(const SettingsDialog& dialog, std::span<const std::string> texts) {
    for (const SettingControl& control : dialog.controls)
        if (control.check.accepts && !control.check.accepts(texts[control.setting]))
            return &control;
    return nullptr;
}

std::optional<SettingFault> first_fault(const SettingsDialog& dialog, std::span<const std::string> texts) {
    if (const SettingControl* rejected = first_rejected(dialog, texts))
        return SettingFault{rejected->setting, rejected->check.message, rejected->check.allowed};
    for (const SettingControl& control : dialog.controls)
        if (control.trial)
            if (PatternResult tried = control.trial(texts, nullptr);
                tried.state == PatternResult::State::remark)
                return SettingFault{control.setting, std::move(tried.text), {}};
    return std::nullopt;
}

void store_settings(const SettingsRequest& request, std::vector<std::string> texts) {
    for (const SettingControl& control : request.dialog.controls)
        if (control.history)
            control.history->add(texts[control.setting]);
    for (std::size_t i = 0; i < texts.size(); ++i)
        if (request.rows[i].remembered)
            text_setting(*request.rows[i].remembered).set(texts[i]);
    request.settings.accept(std::move(texts));
}

void set_settings_dialog_opener(SettingsDialogOpener* opener) {
    current_opener = opener;
}

void open_settings_dialog(const SettingsRequest& request, vantaro::WindowHandle parent,
                          vantaro::CompletionNotify& done) {
    if (current_opener)
        current_opener(request, parent, done);
    else
        done.notify(0);
}

} // namespace quorvex
