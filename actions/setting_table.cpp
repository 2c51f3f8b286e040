#include "actions/setting_table.h"

#include "actions/auto_track_number.h"
#include "actions/copy_values.h"
#include "actions/embed_cuesheet.h"
#include "actions/fixed_value.h"
#include "actions/format_value.h"
#include "actions/guess_values.h"
#include "actions/input_data.h"
#include "actions/parameter_text.h"
#include "actions/remove_fields.h"
#include "actions/remove_values.h"
#include "actions/replace_value.h"
#include "actions/split_field.h"

#include <array>

namespace quorvex {

namespace {

using enum SettingForm;

constexpr SettingName field_and_value[] = {{"field", line}, {"value", line}};
constexpr SettingName field_only[] = {{"field", rest}};
constexpr SettingName kept_fields[] = {{"fields", rest}};
constexpr SettingName values_to_remove[] = {{"field", line}, {"values", line}, {"case-sensitive", case_flag}};
constexpr SettingName values_to_replace[] = {
    {"field", line}, {"old", line}, {"new", line}, {"case-sensitive", case_flag}};
constexpr SettingName field_and_pattern[] = {{"field", line}, {"pattern", line}};
constexpr SettingName two_fields[] = {{"from", line}, {"to", line}};
constexpr SettingName pattern_only[] = {{"pattern", rest}};
constexpr SettingName pattern_and_source[] = {{"pattern", line}, {"source", rest}};
constexpr SettingName field_and_separator[] = {{"field", line}, {"separator", rest}};
constexpr SettingName pattern_and_data[] = {{"pattern", line}, {"data", rest}};

constexpr std::array<KindSettings, 16> kinds{{
    {AutoTrackNumber::kind, pattern_only},
    {EmbedCuesheet::kind, {}},
    {InputData::kind, pattern_and_data},
    {RemoveValues::kind, values_to_remove},
    {RemoveAllFields::kind, {}},
    {RemoveField::kind, field_only},
    {RemoveAllFieldsExcept::kind, kept_fields},
    {ReplaceValue::kind, values_to_replace},
    {GuessFromFileName::kind, pattern_only},
    {GuessFromFields::kind, pattern_and_source},
    {SetValue::kind, field_and_value},
    {AddValue::kind, field_and_value},
    {SplitArtists::kind, {}},
    {SplitField::kind, field_and_separator},
    {FormatValue::kind, field_and_pattern},
    {CopyValues::kind, two_fields},
}};

constexpr bool all_different() {
    for (std::size_t i = 0; i < kinds.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (kinds[i].kind == kinds[j].kind)
                return false;
    return true;
}
static_assert(all_different());

} // namespace

const KindSettings* settings_of(const vantaro::Guid& kind) {
    for (const KindSettings& row : kinds)
        if (row.kind == kind)
            return &row;
    return nullptr;
}

std::vector<std::string> split_settings(const KindSettings& kind, std::string_view parameters) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kind.settings.size(); ++i) {
        if (i + 1 < kind.settings.size()) {
            const auto [first, others] = split_first_line(parameters);
            texts.emplace_back(first);
            parameters = others;
        } else {
            if (kind.settings[i].form != rest && parameters.find('\n') != std::string_view::npos)
                reject_parameter_text();
            if (kind.settings[i].form == SettingForm::case_flag)
                read_case_flag(parameters);
            texts.emplace_back(parameters);
        }
    }
    return texts;
}

std::string join_settings(const KindSettings& kind, const std::vector<std::string>& settings) {
    std::string parameters;
    for (std::size_t i = 0; i < kind.settings.size(); ++i) {
        if (i > 0)
            parameters += '\n';
        parameters += settings[i];
    }
    return parameters;
}

} // namespace quorvex
