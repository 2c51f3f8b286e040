// "Embed cuesheet": copies the cue sheet that lies beside a track's file into the field CUESHEET. Only for
// whole files of formats that carry a cue sheet, on file systems of this machine. Problems are lines on the
// console; the track is then left alone.
#pragma once

#include "actions/action_base.h"

namespace quorvex {

class EmbedCuesheet final : public SettinglessAction<EmbedCuesheet> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{AC6410DE-FE47-44FF-A5CA-29A42B5B6799}");
    static constexpr const char* menu_name = "Embed cuesheet";

    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;
};

} // namespace quorvex
