#include "actions/remove_values.h"

#include "actions/value_list.h"
#include "host/shared/text.h"

namespace quorvex {

using namespace vantaro;

namespace {

constexpr Control controls[] = {
    label("Field name:", {4, 4, 60, 8}),
    field_name_box(1001, 4, 12, 245),
    label("Values to remove, semicolon-separated:", {4, 31, 176, 8}),
    check_box(1003, "Case-sensitive", {185, 30, 64, 10}),
    edit(1002, {4, 41, 245, 12}, 0),
    ok_button(141, 60),
    cancel_button(197, 60),
};
constexpr AnchorRow anchors[] = {
    {1001, 0, 0, 1, 0}, {1002, 0, 0, 1, 0}, {1003, 1, 0, 1, 0}, {ok_id, 1, 1, 1, 1}, {cancel_id, 1, 1, 1, 1}};
constexpr Resizing resizing{anchors, 253, 79, false};
constexpr SettingControl bound[] = {
    {1001, RemoveValues::field_name, a_field_name, &field_name_history},
    {1002, RemoveValues::values, not_empty("Please enter values to remove.")},
    {1003, RemoveValues::case_sensitive},
};

} // namespace

constinit const SettingsDialog RemoveValues::dialog{{125, "Remove Values", 253, 79, controls, &resizing},
                                                    bound};

void RemoveValues::get_description(TextSink& out) {
    const bool several = text(values).find(';') != std::string::npos;
    set_text(out, std::string("Remove value") + (several ? "s" : "") + ": " + text(field_name) + " = "
                      + text(values) + ", " + case_text(text(case_sensitive)));
}

void RemoveValues::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const std::size_t field = info.find_field(text(field_name).c_str());
    if (field == no_field)
        return;
    const bool counts_case = is_case_sensitive(text(case_sensitive));
    MarkedPositions removed(info.value_count(field));
    for (std::size_t i = 0; i < info.value_count(field); ++i) {
        const std::string_view value = info.value(field, i);
        const bool chosen = any_entry(text(values), [&](std::string_view entry) {
            return counts_case ? value == entry
                               : stricmp_utf8_ex(value.data(), value.size(), entry.data(), entry.size()) == 0;
        });
        if (chosen)
            removed.mark(i);
    }
    info.remove_values(field, removed);
}

} // namespace quorvex
