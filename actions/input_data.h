// "Input data (one line per track)...": line i of a text that the user pastes in belongs to track i of the
// run, and is taken apart by a guess pattern.
//
// Parameter text: the pattern (line feeds in it as "|"), a line feed, the data with its own line breaks.
#pragma once

#include "actions/action_base.h"

#include <vector>

namespace quorvex {

class InputData final : public ConfiguredAction<InputData, 2> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{5A2336D8-45E4-4E5A-97EF-DF28CB113BE3}");
    static constexpr const char* menu_name = "Input data (one line per track)...";
    enum : std::size_t { scheme, data };
    static constexpr Setting settings[] = {
        {"pattern", SettingForm::line, {}, &setting::last_input_data_scheme}, {"data", SettingForm::rest}};
    static const SettingsDialog dialog;

    void get_description(vantaro::TextSink& out) override { vantaro::set_text(out, menu_name); }
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    void settings_changed() override;

    /// Where each line starts. A line ends at a line feed; what follows a carriage return in it is no part of
    /// it.
    std::vector<std::size_t> line_starts_;
};

} // namespace quorvex
