// Settings of an action: texts in a fixed order, as rows of a table that their kind declares.
//
//     static constexpr Setting settings[] = {{"field", SettingForm::line}, {"separator", SettingForm::rest,
//     ","}};
//
// The order is that of the kind's parameter text, and settings are counted from 0 in it.
#pragma once

#include "host/api/guid.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex {

/// How a setting stands in the parameter text.
enum class SettingForm {
    /// One line.
    line,
    /// All the text that is left, line breaks included.
    rest,
    /// The letter "c" or "n": whether letter case counts.
    case_flag,
};

struct Setting {
    /// For people who write scripts by hand.
    std::string_view name;
    SettingForm form;
    /// What a new action starts with, unless the setting is remembered.
    std::string_view initial = {};
    /// The text variable that holds what was last confirmed in a dialog, and that a new action starts with.
    const vantaro::Guid* remembered = nullptr;
};

/// An action as its settings dialog sees it. Main thread.
class EditableSettings {
public:
    /// The settings as they are, as long as nothing changes them. UTF-8.
    virtual std::span<const std::string> texts() const = 0;
    /// Takes on new settings, as many as there are.
    virtual void accept(std::vector<std::string> texts) = 0;

protected:
    ~EditableSettings() = default;
};

} // namespace quorvex
