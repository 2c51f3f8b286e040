#include "actions/fixed_value.h"

#include "actions/parameter_text.h"
#include "host/shared/text.h"
#include "script/field_name.h"

namespace quorvex {

using namespace vantaro;

namespace {

constexpr std::size_t described_characters = 256;

} // namespace

template <class Kind>
Ref<Action> FixedValueAction<Kind>::create_from_text(std::string_view text) {
    const auto [name, value] = split_lines<2>(text);
    auto action = make_service<Kind>();
    FixedValueAction& settings = *action;
    settings.field_name_ = name;
    settings.field_value_ = value;
    return action;
}

template <class Kind>
void FixedValueAction<Kind>::get_description(TextSink& out) {
    set_text(out, Kind::description_start + field_name_ + "\" = \""
                      + first_line(limit_text(field_value_, described_characters)) + '"');
}

template <class Kind>
void FixedValueAction<Kind>::get_parameter_text(TextSink& out) {
    set_text(out, join_two_lines(field_name_, field_value_));
}

template <class Kind>
void FixedValueAction<Kind>::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    if (!is_valid_field_name(field_name_))
        return;
    if (Kind::adds_value)
        info.add_value(field_name_.c_str(), field_value_.c_str());
    else
        info.set_field(field_name_.c_str(), field_value_.c_str());
}

template class FixedValueAction<SetValue>;
template class FixedValueAction<AddValue>;

} // namespace quorvex
