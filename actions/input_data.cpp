#include "actions/input_data.h"

#include "actions/guess_matcher.h"
#include "actions/pattern_trial.h"

namespace quorvex {

using namespace vantaro;

namespace {

std::vector<std::size_t> line_starts(std::string_view data) {
    std::vector<std::size_t> starts;
    for (std::size_t start = 0; start < data.size();) {
        starts.push_back(start);
        const std::size_t end = data.find('\n', start);
        if (end == std::string_view::npos)
            break;
        start = end + 1;
    }
    return starts;
}

std::string_view line_at(std::string_view data, std::size_t start) {
    const std::string_view rest = data.substr(start);
    return rest.substr(0, rest.find_first_of("\r\n"));
}

PatternResult try_scheme(std::span<const std::string> texts, const PatternSample* sample) {
    const std::string_view data = texts[InputData::data];
    const std::vector<std::size_t> starts = line_starts(data);
    if (!sample || sample->index >= starts.size())
        return {};
    return try_guess_pattern(line_at(data, starts[sample->index]), texts[InputData::scheme]);
}

constexpr Control controls[] = {
    label("Scheme:", {4, 4, 100, 8}),
    drop_down(1001, 4, 12, 253),
    label("Input data (one line for one track):", {4, 29, 253, 8}),
    edit(1002, {4, 38, 253, 132}, control_flag::multi_line | control_flag::scrolls),
    ok_button(149, 176),
    cancel_button(205, 176),
};
constexpr AnchorRow anchors[] = {
    {1001, 0, 0, 1, 0}, {1002, 0, 0, 1, 1}, {ok_id, 1, 1, 1, 1}, {cancel_id, 1, 1, 1, 1}};
constexpr Resizing resizing{anchors, 150, 100, true};
constexpr SettingControl bound[] = {
    {1001, InputData::scheme, a_pattern, &guess_pattern_history, try_scheme},
    {1002, InputData::data},
};

} // namespace

constinit const SettingsDialog InputData::dialog{
    {131, "Input data (one line per track)", 261, 194, controls, &resizing}, bound};

void InputData::settings_changed() {
    line_starts_ = line_starts(text(data));
}

void InputData::apply(TrackHandle*, TrackInfo& info, std::uint32_t index, std::uint32_t) {
    if (index >= line_starts_.size())
        return;
    const std::string_view line = line_at(text(data), line_starts_[index]);
    if (!line.empty())
        guess_fields(info, line, text(scheme));
}

} // namespace quorvex
