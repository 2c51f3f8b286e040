// Kinds that turn values holding several items into several values: "Split field by separator..." and "Split
// multiple artist fields", which splits ARTIST at "," and then at "&".
//
// Parameter texts: the field name, a line feed, the separator; nothing.
#pragma once

#include "actions/action_base.h"

namespace quorvex {

/// Replaces the field's values by the parts between the separators. Blanks before each part, and behind each
/// part that a separator ends, go; empty parts are left out; nothing happens when no part is left. Returns
/// whether the field was rewritten.
bool split_field(const char* field_name, std::string_view separator, vantaro::TrackInfo& info);

class SplitField final : public ConfiguredAction<SplitField, 2> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{52D8A1D3-C2AE-4A28-9B37-0B711A8A24AD}");
    static constexpr const char* menu_name = "Split field by separator...";
    enum : std::size_t { field_name, separator };
    static constexpr Setting settings[] = {{"field", SettingForm::line, "ARTIST"},
                                           {"separator", SettingForm::rest, ","}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

class SplitArtists final : public SettinglessAction<SplitArtists> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{32485E7A-35F7-488B-92FC-726C75059CED}");
    static constexpr const char* menu_name = "Split multiple artist fields";

    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

} // namespace quorvex
