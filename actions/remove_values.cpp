#include "actions/remove_values.h"

#include "actions/parameter_text.h"
#include "actions/value_list.h"
#include "host/shared/text.h"

namespace quorvex {

using namespace vantaro;

Ref<Action> RemoveValues::create_from_text(std::string_view text) {
    const auto [name, values, flag] = split_lines<3>(text);
    auto action = make_service<RemoveValues>();
    action->case_sensitive_ = read_case_flag(flag);
    action->field_name_ = name;
    action->values_ = values;
    return action;
}

void RemoveValues::get_description(TextSink& out) {
    const bool several = values_.find(';') != std::string::npos;
    set_text(out, std::string("Remove value") + (several ? "s" : "") + ": " + field_name_ + " = " + values_
                      + ", " + case_text(case_sensitive_));
}

void RemoveValues::get_parameter_text(TextSink& out) {
    set_text(out, field_name_ + '\n' + values_ + '\n' + case_flag(case_sensitive_));
}

void RemoveValues::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    const std::size_t field = info.find_field(field_name_.c_str());
    if (field == no_field)
        return;
    MarkedPositions removed(info.value_count(field));
    for (std::size_t i = 0; i < info.value_count(field); ++i) {
        const std::string_view value = info.value(field, i);
        const bool chosen = any_entry(values_, [&](std::string_view entry) {
            return case_sensitive_
                       ? value == entry
                       : stricmp_utf8_ex(value.data(), value.size(), entry.data(), entry.size()) == 0;
        });
        if (chosen)
            removed.mark(i);
    }
    info.remove_values(field, removed);
}

} // namespace quorvex
