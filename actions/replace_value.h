// "Replace value...": replaces every value of one field that equals an old value by a new one.
//
// Parameter text: the field name, the old value, the new value, "c" (case-sensitive) or "n", a line each.
#pragma once

#include "actions/action_base.h"

namespace quorvex {

class ReplaceValue final : public ConfiguredAction<ReplaceValue, 4> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{B194C3FE-DACE-4816-A230-A09921D55674}");
    static constexpr const char* menu_name = "Replace value...";
    enum : std::size_t { field_name, old_value, new_value, case_sensitive };
    static constexpr Setting settings[] = {{"field", SettingForm::line},
                                           {"old", SettingForm::line},
                                           {"new", SettingForm::line},
                                           {"case-sensitive", SettingForm::case_flag, "n"}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

} // namespace quorvex
