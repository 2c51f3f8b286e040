// The settings of the built-in kinds by name, for people who write scripts by hand: how the names stand for
// the lines of a kind's parameter text.
//
//     const KindSettings* kind = settings_of(SetValue::kind);     // "field", "value"
//     std::string text = join_settings(*kind, {"GENRE", "Jazz"});
//
// Any thread.
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

struct SettingName {
    std::string_view name;
    SettingForm form;
};

struct KindSettings {
    vantaro::Guid kind;
    /// In the order of the parameter text. Empty for a kind without settings.
    std::span<const SettingName> settings;
};

/// Nothing for a kind that is not built in.
const KindSettings* settings_of(const vantaro::Guid& kind);

/// Takes a parameter text apart, one text a setting; a case flag becomes "c" or "n".
/// Throws: vantaro_io::exception_io_data when the text has not that many lines.
std::vector<std::string> split_settings(const KindSettings& kind, std::string_view parameters);
/// The other way. Requires: one text a setting, and no line feed in one that is a line.
std::string join_settings(const KindSettings& kind, const std::vector<std::string>& settings);

} // namespace quorvex
