#include "actions/remove_fields.h"

#include "actions/value_list.h"
#include "component/configuration.h"
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

} // namespace

void RemoveField::get_description(TextSink& out) {
    set_text(out, "Remove field: \"" + field_name_ + '"');
}

void RemoveField::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const std::size_t field = info.find_field(field_name_.c_str());
    if (field != no_field)
        info.remove_fields(MaskOne(field));
}

void RemoveAllFields::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    info.remove_fields(MaskAll());
}

Ref<Action> RemoveAllFieldsExcept::create() {
    return create_from_text(text_setting(setting::kept_fields_list).get());
}

void RemoveAllFieldsExcept::get_description(TextSink& out) {
    set_text(out, "Remove all fields except for \"" + kept_ + '"');
}

void RemoveAllFieldsExcept::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const std::string_view list = well_formed_beginning(kept_);
    MarkedPositions removed(info.field_count());
    for (std::size_t field = 0; field < info.field_count(); ++field) {
        const std::string_view name = info.field_name(field);
        const bool kept = any_entry(list, [&](std::string_view entry) {
            return stricmp_utf8_ex(entry.data(), entry.size(), name.data(), name.size()) == 0;
        });
        if (!kept)
            removed.mark(field);
    }
    info.remove_fields(removed);
}

} // namespace quorvex
