#include "actions/copy_values.h"

#include "actions/parameter_text.h"
#include "script/field_name.h"

#include <vector>

namespace quorvex {

using namespace vantaro;

Ref<Action> CopyValues::create_from_text(std::string_view text) {
    const auto [source, destination] = split_lines<2>(text);
    auto action = make_service<CopyValues>();
    action->source_ = source;
    action->destination_ = destination;
    return action;
}

void CopyValues::get_description(TextSink& out) {
    set_text(out, "Copy \"" + source_ + "\" to \"" + destination_ + '"');
}

void CopyValues::get_parameter_text(TextSink& out) {
    set_text(out, join_two_lines(source_, destination_));
}

void CopyValues::apply(TrackHandle*, TrackInfo& info, std::uint32_t, std::uint32_t) {
    if (!is_valid_field_name(source_) || !is_valid_field_name(destination_))
        return;
    const std::size_t source = info.find_field(source_.c_str());
    const std::size_t destination = info.find_field(destination_.c_str());
    if (destination != no_field && destination == source)
        return;
    std::vector<std::string> values;
    if (source != no_field)
        for (std::size_t i = 0; i < info.value_count(source); ++i)
            values.emplace_back(info.value(source, i));
    if (destination != no_field)
        info.remove_fields(MaskOne(destination));
    for (const std::string& value : values)
        info.add_value(destination_.c_str(), value.c_str());
}

} // namespace quorvex
