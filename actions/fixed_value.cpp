#include "actions/fixed_value.h"

#include "host/shared/text.h"
#include "script/field_name.h"

namespace quorvex {

using namespace vantaro;

namespace {

constexpr std::size_t described_characters = 256;

constexpr Control controls[] = {
    label("Field name:", {4, 4, 43, 8}),
    field_name_box(1019, 4, 12, 244),
    label("Field value:", {4, 28, 43, 8}),
    edit(1020, {4, 36, 244, 128}, control_flag::multi_line, 0x100000),
    ok_button(140, 168),
    cancel_button(196, 168),
};
constexpr AnchorRow anchors[] = {
    {1019, 0, 0, 1, 0}, {1020, 0, 0, 1, 1}, {ok_id, 1, 1, 1, 1}, {cancel_id, 1, 1, 1, 1}};
constexpr Resizing resizing{anchors, 150, 100, true};
constexpr SettingControl bound[] = {
    {1019, SetValue::field_name, a_field_name, &field_name_history},
    {1020, SetValue::field_value},
};

} // namespace

constinit const SettingsDialog SetValue::dialog{{121, "Set Value", 252, 185, controls, &resizing}, bound};
constinit const SettingsDialog AddValue::dialog{{121, "Add Value", 252, 185, controls, &resizing}, bound};

template <class Kind>
void FixedValueAction<Kind>::get_description(TextSink& out) {
    set_text(out, Kind::description_start + this->text(field_name) + "\" = \""
                      + first_line(limit_text(this->text(field_value), described_characters)) + '"');
}

template <class Kind>
void FixedValueAction<Kind>::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const std::string& name = this->text(field_name);
    if (!is_valid_field_name(name))
        return;
    if (Kind::adds_value)
        info.add_value(name.c_str(), this->text(field_value).c_str());
    else
        info.set_field(name.c_str(), this->text(field_value).c_str());
}

template class FixedValueAction<SetValue>;
template class FixedValueAction<AddValue>;

} // namespace quorvex
