// "Format value from other fields...": sets a field to what a title-formatting pattern gives for the track.
// The pattern sees the tags as the actions before left them, and the fields of FieldProvider; while it holds
// %now%, the action follows the clock and tells its notify every second that its result has changed.
//
// Parameter text: the destination field, the pattern, a line each.
#pragma once

#include "actions/action_base.h"
#include "engine/title_script.h"
#include "host/api/system.h"

#include <mutex>

namespace quorvex {

class FormatValue final : public ConfiguredAction<FormatValue, 2> {
public:
    static constexpr vantaro::Guid kind = vantaro::guid("{48F67226-8A33-409F-A0DF-FFB157DF1B7E}");
    static constexpr const char* menu_name = "Format value from other fields...";
    enum : std::size_t { destination, pattern };
    static constexpr Setting settings[] = {
        {"field", SettingForm::line}, {"pattern", SettingForm::line, {}, &setting::last_formatting_pattern}};
    static const SettingsDialog dialog;

    /// A new action does not follow the clock, whatever its pattern: one that was read or confirmed does.
    explicit FormatValue(vantaro::CompletionNotify& notify) : notify_(&notify) {}
    ~FormatValue() override;

    void get_description(vantaro::TextSink& out) override;
    void apply(vantaro::TrackHandle* track, vantaro::TrackInfo& info, std::uint32_t index,
               std::uint32_t total) override;

private:
    /// Receives the time for the action that holds it.
    class Clock final : public vantaro::StaticService<vantaro::ClockCallback> {
    public:
        explicit Clock(FormatValue& action) : action_(action) {}
        void on_time(std::uint64_t time) override { action_.set_time(time); }

    private:
        FormatValue& action_;
    };

    void settings_changed() override;
    void leave_clock();
    void set_time(std::uint64_t time);

    TitleScript script_;
    const Ref<vantaro::CompletionNotify> notify_;
    Clock clock_{*this};
    bool follows_clock_ = false;
    std::mutex mutex_; // guards time_
    std::uint64_t time_ = 0;
};

} // namespace quorvex
