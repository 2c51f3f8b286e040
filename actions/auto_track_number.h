// "Auto track number...": writes TRACKNUMBER and TOTALTRACKS, counting by album. Neighbours in the list for
// which the album separation pattern gives the same text are one album; with an empty pattern the whole list
// is.
//
// Parameter text: the pattern.
#pragma once

#include "actions/action_base.h"
#include "engine/title_script.h"

namespace quorvex {

class AutoTrackNumber final : public ConfiguredAction<AutoTrackNumber, 1> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{F6D34BCA-5E3D-441B-A76F-39CA11802245}");
    static constexpr const char* menu_name = "Auto track number...";
    enum : std::size_t { pattern };
    static constexpr Setting settings[] = {
        {"pattern", SettingForm::rest, {}, &setting::album_separation_pattern}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
    bool uses_group_key() override { return !text(pattern).empty(); }
    /// The digest of what the pattern gives for the tags that the host holds.
    vantaro::Guid get_group_key(vantaro::TrackHandle* track) override;

private:
    void settings_changed() override { album_.drop(); }

    TitleScript album_;
};

} // namespace quorvex
