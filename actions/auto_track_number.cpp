#include "actions/auto_track_number.h"

#include "actions/pattern_trial.h"
#include "host/api/system.h"

namespace quorvex {

using namespace vantaro;

namespace {

/// As the album of a track is found: from the tags that the host holds.
PatternResult try_album(std::span<const std::string> texts, const PatternSample* sample) {
    const std::string& pattern = texts[AutoTrackNumber::pattern];
    if (auto fault = pattern_fault(pattern))
        return *std::move(fault);
    if (!sample)
        return {};
    if (pattern.empty())
        return {PatternResult::State::remark, "All tracks are one album"};
    return {PatternResult::State::result, TitleScript().format_held(pattern, *sample->track)};
}

constexpr Control controls[] = {
    label("Album separation pattern (leave empty to treat all items as one album):", {4, 3, 232, 8}),
    edit(1001, {4, 12, 232, 12}, control_flag::scrolls),
    ok_button(128, 26),
    cancel_button(184, 26),
};
constexpr SettingControl bound[] = {
    {1001, AutoTrackNumber::pattern, any_text, nullptr, try_album},
};

} // namespace

constinit const SettingsDialog AutoTrackNumber::dialog{{120, "Auto Track Number", 240, 42, controls}, bound};

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
    const std::string album = album_.format_held(text(pattern), *track);
    const auto digest = Ref<DigestState>::adopt(required_service<DigestService>()->initialise());
    digest->process(album.data(), album.size());
    return digest->result();
}

} // namespace quorvex
