#include "actions/replace_value.h"

#include "actions/parameter_text.h"
#include "host/shared/text.h"

namespace quorvex {

using namespace vantaro;

Ref<Action> ReplaceValue::create_from_text(std::string_view text) {
    const auto [name, old_value, new_value, flag] = split_lines<4>(text);
    auto action = make_service<ReplaceValue>();
    action->case_sensitive_ = read_case_flag(flag);
    action->field_name_ = name;
    action->old_value_ = old_value;
    action->new_value_ = new_value;
    return action;
}

void ReplaceValue::get_description(TextSink& out) {
    set_text(out, "Replace " + field_name_ + " value \"" + old_value_ + "\" with \"" + new_value_ + "\", "
                      + case_text(case_sensitive_));
}

void ReplaceValue::get_parameter_text(TextSink& out) {
    set_text(out, field_name_ + '\n' + old_value_ + '\n' + new_value_ + '\n' + case_flag(case_sensitive_));
}

void ReplaceValue::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const std::size_t field = info.find_field(field_name_.c_str());
    if (field == no_field)
        return;
    const std::size_t count = info.value_count(field);
    for (std::size_t i = 0; i < count; ++i) {
        const char* value = info.value(field, i);
        if (case_sensitive_ ? old_value_ == value : stricmp_utf8(value, old_value_.c_str()) == 0)
            info.modify_value(field, i, new_value_.c_str());
    }
}

} // namespace quorvex
