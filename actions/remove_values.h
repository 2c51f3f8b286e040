// "Remove values...": removes chosen values from one field; the others stay in their order.
//
// Parameter text: the field name, the values (separated by ";"), "c" (case-sensitive) or "n", a line each.
#pragma once

#include "actions/action_base.h"

namespace quorvex {

class RemoveValues final : public ConfiguredAction<RemoveValues, 3> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{CB1F5EF2-7865-40E7-8DDE-D51C3721AC79}");
    static constexpr const char* menu_name = "Remove values...";
    enum : std::size_t { field_name, values, case_sensitive };
    static constexpr Setting settings[] = {{"field", SettingForm::line},
                                           {"values", SettingForm::line},
                                           {"case-sensitive", SettingForm::case_flag, "n"}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

} // namespace quorvex
