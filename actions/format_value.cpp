#include "actions/format_value.h"

#include "actions/field_provider.h"
#include "actions/parameter_text.h"
#include "component/configuration.h"
#include "host/shared/text.h"
#include "script/field_name.h"

namespace quorvex {

using namespace vantaro;

namespace {

constexpr std::uint64_t one_second = 10'000'000; // in units of 100 ns

} // namespace

Ref<Action> FormatValue::create(CompletionNotify& notify) {
    return make_service<FormatValue>(notify, "", text_setting(setting::last_formatting_pattern).get());
}

Ref<Action> FormatValue::create_from_text(CompletionNotify& notify, std::string_view text) {
    const auto [destination, pattern] = split_lines<2>(text);
    auto action = make_service<FormatValue>(notify, destination, pattern);
    action->follow_clock_if_used();
    return action;
}

FormatValue::FormatValue(CompletionNotify& notify, std::string_view destination, std::string_view pattern)
    : destination_(destination), script_(pattern), notify_(&notify) {}

FormatValue::~FormatValue() {
    leave_clock();
}

void FormatValue::follow_clock_if_used() {
    std::string lower;
    uAddStringLower(lower, script_.pattern());
    if (lower.find("%now%") == std::string::npos)
        return;
    leave_clock();
    // First, since the clock may call at once.
    follows_clock_ = true;
    required_service<ClockService>()->register_callback(&clock_, one_second);
}

void FormatValue::leave_clock() {
    if (std::exchange(follows_clock_, false))
        required_service<ClockService>()->unregister_callback(&clock_);
}

void FormatValue::set_time(std::uint64_t time) {
    {
        const std::lock_guard lock(mutex_);
        time_ = time;
    }
    notify_->notify(0);
}

void FormatValue::get_description(TextSink& out) {
    set_text(out, "Format \"" + destination_ + "\" using \"" + script_.pattern() + '"');
}

void FormatValue::get_parameter_text(TextSink& out) {
    set_text(out, join_two_lines(destination_, script_.pattern_setting()));
}

void FormatValue::apply(TrackHandle* track, TrackInfo& info, std::uint32_t index, std::uint32_t total) {
    if (!is_valid_field_name(destination_))
        return;
    std::uint64_t now = 0;
    {
        const std::lock_guard lock(mutex_);
        now = time_;
    }
    FieldProvider fields(index, total, now);
    const std::string result = script_.format(*track, info, &fields);
    if (!result.empty()) {
        info.set_field(destination_.c_str(), result.c_str());
    } else if (const std::size_t field = info.find_field(destination_.c_str()); field != no_field) {
        info.remove_fields(MaskOne(field));
    }
}

} // namespace quorvex
