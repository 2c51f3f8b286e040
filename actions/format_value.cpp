#include "actions/format_value.h"

#include "actions/field_provider.h"
#include "actions/pattern_trial.h"
#include "host/shared/text.h"
#include "script/field_name.h"

namespace quorvex {

using namespace vantaro;

namespace {

constexpr std::uint64_t one_second = 10'000'000; // in units of 100 ns

constexpr Control controls[] = {
    label("Destination field name:", {4, 4, 78, 8}),
    field_name_box(1024, 4, 12, 244),
    label("Formatting pattern:", {4, 28, 66, 8}),
    drop_down(1008, 4, 36, 244),
    ok_button(140, 56),
    cancel_button(196, 56),
};
constexpr SettingControl bound[] = {
    {1024, FormatValue::destination, a_field_name, &field_name_history},
    {1008, FormatValue::pattern, any_text, &formatting_pattern_history,
     try_title_setting<FormatValue::pattern>},
};

} // namespace

constinit const SettingsDialog FormatValue::dialog{{126, "Format value", 252, 76, controls}, bound};

FormatValue::~FormatValue() {
    leave_clock();
}

void FormatValue::settings_changed() {
    script_.drop();
    leave_clock();
    {
        const std::lock_guard lock(mutex_);
        time_ = 0;
    }
    std::string lower;
    uAddStringLower(lower, text(pattern));
    if (lower.find("%now%") == std::string::npos)
        return;
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
    set_text(out, "Format \"" + text(destination) + "\" using \"" + text(pattern) + '"');
}

void FormatValue::apply(TrackHandle* track, TrackInfo& info, std::uint32_t index, std::uint32_t total) {
    const std::string& field_name = text(destination);
    if (!is_valid_field_name(field_name))
        return;
    std::uint64_t now = 0;
    {
        const std::lock_guard lock(mutex_);
        now = time_;
    }
    FieldProvider fields(index, total, now);
    const std::string result = script_.format(text(pattern), *track, info, &fields);
    if (!result.empty()) {
        info.set_field(field_name.c_str(), result.c_str());
    } else if (const std::size_t field = info.find_field(field_name.c_str()); field != no_field) {
        info.remove_fields(MaskOne(field));
    }
}

} // namespace quorvex
