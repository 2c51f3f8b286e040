#include "actions/copy_values.h"

#include "script/field_name.h"

#include <vector>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr Control controls[] = {
    label("Source field name:", {4, 4, 66, 8}),
    field_name_box(1006, 4, 12, 244),
    label("Destination field name:", {4, 28, 78, 8}),
    field_name_box(1020, 4, 36, 244),
    ok_button(140, 56),
    cancel_button(196, 56),
};
constexpr SettingControl bound[] = {
    {1006, CopyValues::source, a_field_name, &field_name_history},
    {1020, CopyValues::destination, a_field_name, &field_name_history},
};

} // namespace

constinit const SettingsDialog CopyValues::dialog{{123, "Copy values", 252, 76, controls}, bound};

void CopyValues::get_description(TextSink& out) {
    set_text(out, "Copy \"" + text(source) + "\" to \"" + text(destination) + '"');
}

void CopyValues::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    if (!is_valid_field_name(text(source)) || !is_valid_field_name(text(destination)))
        return;
    const std::size_t from = info.find_field(text(source).c_str());
    const std::size_t to = info.find_field(text(destination).c_str());
    if (to != no_field && to == from)
        return;
    std::vector<std::string> values;
    if (from != no_field)
        for (std::size_t i = 0; i < info.value_count(from); ++i)
            values.emplace_back(info.value(from, i));
    if (to != no_field)
        info.remove_fields(MaskOne(to));
    for (const std::string& value : values)
        info.add_value(text(destination).c_str(), value.c_str());
}

} // namespace quorvex
