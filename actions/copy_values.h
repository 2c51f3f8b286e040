// "Copy values between fields...": makes one field a copy of another one, all values in their order. A field
// copied onto itself stays as it is.
//
// Parameter text: the source field, the destination field, a line each.
#pragma once

#include "actions/action_base.h"

namespace quorvex {

class CopyValues final : public ConfiguredAction<CopyValues, 2> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{CE928A7A-4793-4797-AEBD-60DE490E4AF1}");
    static constexpr const char* menu_name = "Copy values between fields...";
    enum : std::size_t { source, destination };
    static constexpr Setting settings[] = {{"from", SettingForm::line}, {"to", SettingForm::line}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

} // namespace quorvex
