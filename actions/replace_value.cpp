#include "actions/replace_value.h"

#include "host/shared/text.h"

namespace quorvex {

using namespace vantaro;

namespace {

constexpr Control controls[] = {
    label("Field name:", {4, 4, 60, 8}),
    field_name_box(1001, 4, 12, 245),
    label("Old value:", {4, 31, 176, 8}),
    check_box(1004, "Case-sensitive", {185, 30, 64, 10}),
    edit(1002, {4, 41, 245, 12}, 0),
    label("New value:", {4, 59, 176, 8}),
    edit(1003, {4, 68, 245, 12}, 0),
    ok_button(141, 93),
    cancel_button(197, 93),
};
constexpr SettingControl bound[] = {
    {1001, ReplaceValue::field_name, a_field_name, &field_name_history},
    {1002, ReplaceValue::old_value, not_empty("Please enter a value.")},
    {1003, ReplaceValue::new_value, not_empty("Please enter a value.")},
    {1004, ReplaceValue::case_sensitive},
};

} // namespace

constinit const SettingsDialog ReplaceValue::dialog{{128, "Replace Value", 253, 113, controls}, bound};

void ReplaceValue::get_description(TextSink& out) {
    set_text(out, "Replace " + text(field_name) + " value \"" + text(old_value) + "\" with \""
                      + text(new_value) + "\", " + case_text(text(case_sensitive)));
}

void ReplaceValue::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const std::size_t field = info.find_field(text(field_name).c_str());
    if (field == no_field)
        return;
    const std::string& wanted = text(old_value);
    const bool counts_case = is_case_sensitive(text(case_sensitive));
    const std::size_t count = info.value_count(field);
    for (std::size_t i = 0; i < count; ++i) {
        const char* value = info.value(field, i);
        if (counts_case ? wanted == value : stricmp_utf8(value, wanted.c_str()) == 0)
            info.modify_value(field, i, text(new_value).c_str());
    }
}

} // namespace quorvex
