#include "actions/remove_fields.h"

#include "actions/value_list.h"
#include "host/shared/text.h"

namespace quorvex {

using namespace vantaro;

namespace {

/// Up to the first bytes that are not UTF-8: what stands behind them does not count.
std::string_view well_formed_beginning(std::string_view text) {
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t left = rest.size();
        if (take_character(rest) >= invalid_byte_base)
            return text.substr(0, text.size() - left);
    }
    return text;
}

constexpr Control name_controls[] = {
    field_name_box(1001, 4, 4, 164, control_flag::upper_case),
    ok_button(60, 20),
    cancel_button(116, 20),
};
constexpr SettingControl bound_name[] = {
    {1001, RemoveField::field_name, a_field_name, &field_name_history},
};
constexpr Control list_controls[] = {
    label("Fields to leave (semicolon-separated):", {4, 4, 212, 8}),
    edit(1001, {4, 13, 212, 12}, control_flag::scrolls),
    ok_button(108, 28),
    cancel_button(164, 28),
};
constexpr SettingControl bound_list[] = {
    {1001, RemoveAllFieldsExcept::kept, not_empty("Please enter a list of field names.")},
};

} // namespace

constinit const SettingsDialog RemoveField::dialog{{122, "Select field to remove", 172, 36, name_controls},
                                                   bound_name};
constinit const SettingsDialog RemoveAllFieldsExcept::dialog{
    {124, "Remove all values except for", 220, 44, list_controls}, bound_list};

void RemoveField::get_description(TextSink& out) {
    set_text(out, "Remove field: \"" + text(field_name) + '"');
}

void RemoveField::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const std::size_t field = info.find_field(text(field_name).c_str());
    if (field != no_field)
        info.remove_fields(MaskOne(field));
}

void RemoveAllFields::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    info.remove_fields(MaskAll());
}

void RemoveAllFieldsExcept::get_description(TextSink& out) {
    set_text(out, "Remove all fields except for \"" + text(kept) + '"');
}

void RemoveAllFieldsExcept::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const std::string_view list = well_formed_beginning(text(kept));
    MarkedPositions removed(info.field_count());
    for (std::size_t field = 0; field < info.field_count(); ++field) {
        const std::string_view name = info.field_name(field);
        const bool is_kept = any_entry(list, [&](std::string_view entry) {
            return stricmp_utf8_ex(entry.data(), entry.size(), name.data(), name.size()) == 0
                   || info.find_field(std::string(entry).c_str()) == field; // "disc" for DISCNUMBER
        });
        if (!is_kept)
            removed.mark(field);
    }
    info.remove_fields(removed);
}

} // namespace quorvex
