#include "actions/auto_track_number.h"

#include "component/configuration.h"
#include "host/api/system.h"

namespace quorvex {

using namespace vantaro;

Ref<Action> AutoTrackNumber::create() {
    return create_from_text(text_setting(setting::album_separation_pattern).get());
}

void AutoTrackNumber::get_description(TextSink& out) {
    set_text(out, "Auto track number");
}

void AutoTrackNumber::apply(TrackHandle*, TrackInfo& info, std::uint32_t index, std::uint32_t total) {
    info.set_field("TRACKNUMBER", std::to_string(std::uint64_t{index} + 1).c_str());
    info.set_field("TOTALTRACKS", std::to_string(total).c_str());
}

Guid AutoTrackNumber::get_group_key(TrackHandle* track) {
    if (!uses_group_key())
        return {};
    const std::string text = album_.format_held(*track);
    const auto digest = Ref<DigestState>::adopt(required_service<DigestService>()->initialise());
    digest->process(text.data(), text.size());
    return digest->result();
}

} // namespace quorvex
